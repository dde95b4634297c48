set(PUBLIC_HEADERS ZPLiteral.h ZPRange.h ZPObject.h ZPAllocation.h ZPNames.h ZPAutoreleasePool.h ZPException.h ZPLog.h)
