// SPDX-License-Identifier: MIT
// The concrete scanner, and what other folders' parsers share with it.
#pragma once

#include <Bedrock/strings/ZPCharacterSet.h>
#include <Bedrock/strings/ZPScanner.h>

//   scanLocation   never beyond the end of scanString
struct ZPConcreteScanner : ZPScanner {
    ZP_PRIVATE_CLASS(ZPConcreteScanner)
    ZPString *_scanString;
    ZPCharacterSet *_skipSet;
    ZPDictionary *_locale;
    unsigned _scanLocation;
    struct {
        unsigned caseSensitive : 1;
    } _flags;
};

/// Moves the scanner past the members of its skip set.
void _skipWhitespace(ZPScanner *scanner);
