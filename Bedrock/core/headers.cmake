# SPDX-License-Identifier: MIT
set(PUBLIC_HEADERS ZPLiteral.h ZPRange.h ZPObject.h ZPProxy.h ZPAllocation.h ZPNames.h ZPAutoreleasePool.h ZPRef.h ZPException.h ZPAssertionHandler.h ZPLog.h)
