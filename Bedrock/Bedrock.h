// Everything a client needs.
#pragma once

#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/core/ZPObject.h>
