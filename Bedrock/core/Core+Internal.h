// SPDX-License-Identifier: MIT
// What the core's own files share.
#pragma once

#include <Bedrock/core/Fronts.h>
#include <Bedrock/core/Memory.h>
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/CText.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/core/ZPObject.h>
#include <Bedrock/platform/host/Host.h>
#include <Bedrock/platform/kernel/Kernel.h>

/// Names the default zone, reads the debug switches; once, from `+initialize` of either root class.
void _ZPStartUp();
/// The autorelease switches of the environment, for the starting thread.
void _ZPReadAutoreleaseSwitches();
/// YES when the object's class is one of the zombie classes.
BOOL _ZPIsZombie(objc_object *object);
/// Turns a dead instance into a zombie; answers NO when its memory is to be freed all the same.
BOOL _ZPMakeZombie(objc_object *object);
/// Searches protocols, then method lists.
const objc_methodDescription *_ZPDescribeMethod(Class cls, SEL selector);
BOOL _ZPConforms(Class cls, Protocol *protocol);
