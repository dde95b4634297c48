set(PUBLIC_HEADERS ZPThread.h ZPLock.h)
