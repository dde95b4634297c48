# SPDX-License-Identifier: MIT
set(PUBLIC_HEADERS ZPParser.h ZPPropertyList.h)
