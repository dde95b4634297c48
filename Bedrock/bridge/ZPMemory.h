// SPDX-License-Identifier: MIT
// Ownership by scope, for programs that know it by this header.
#pragma once

#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/ZPRef.h>
