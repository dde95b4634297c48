# SPDX-License-Identifier: MIT
set(PUBLIC_HEADERS ZPData.h ZPFileMapper.h)
