// SPDX-License-Identifier: MIT
// The bytes of data objects without messages.
#pragma once

#include <Bedrock/data/ZPData.h>

/// The bytes and length of a data object, valid while it lives and is not changed.
struct ZPDataView {
    const unsigned char *bytes = nullptr;
    unsigned length = 0;
};

/// Whether an object is data of the library's immutable class; then `view` shows it.
bool _ZPViewOfOwnData(id object, ZPDataView &view);
