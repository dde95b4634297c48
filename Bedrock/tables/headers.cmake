# SPDX-License-Identifier: MIT
set(PUBLIC_HEADERS ZPSimpleHashing.h ZPHashTable.h ZPMapTable.h ZPOrderedHeap.h ZPRangeArray.h ZPSparseIndexArray.h ZPRangeValueArray.h)
