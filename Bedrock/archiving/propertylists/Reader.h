// SPDX-License-Identifier: MIT
#pragma once

#include <Bedrock/archiving/grammar/Grammar.h>

/// The tree of a property list, which the caller owns; null when the text is not well formed or not at hand as
/// one run, and the parser has to look at it.
id _ZPReadPropertyList(ZPString *string);
