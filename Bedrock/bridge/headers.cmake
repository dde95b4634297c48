# SPDX-License-Identifier: MIT
set(PUBLIC_HEADERS ZPCollectionBridge.h ZPMemory.h ZPStringBridge.h)
