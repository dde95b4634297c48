# SPDX-License-Identifier: MIT
set(PUBLIC_HEADERS ZPThread.h ZPLock.h)
