# SPDX-License-Identifier: MIT
set(PUBLIC_HEADERS ZPObjectList.h ZPEnumerator.h ZPArray.h ZPDictionary.h ZPSet.h)
