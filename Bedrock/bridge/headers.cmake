set(PUBLIC_HEADERS ZPMemory.h ZPStringBridge.h)
