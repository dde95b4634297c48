// SPDX-License-Identifier: MIT
// The object runtime, whole.
#pragma once

#include <Bedrock/platform/ZPImplement.h>
#include <Bedrock/platform/ZPProtocol.h>
