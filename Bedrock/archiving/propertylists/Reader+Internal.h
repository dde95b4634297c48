// SPDX-License-Identifier: MIT
// The room of property lists: reading text by the grammar's parser (Parser.cpp) and, in the usual case, faster without
// it (Reader.cpp); writing (Writer.cpp); files of both (Files.cpp). It adds to strings and collections by categories:
// other rooms reach it by messages, and by ZPPropertyList.h. Read Parser.cpp first.
#pragma once

#include <Bedrock/archiving/grammar/Grammar.h>

/// The tree of a property list, which the caller owns; null when the text is not well formed or not at hand as
/// one run, and the parser has to look at it.
id _ZPReadPropertyList(ZPString *string);
