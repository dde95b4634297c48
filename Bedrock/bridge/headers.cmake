set(PUBLIC_HEADERS ZPCollectionBridge.h ZPMemory.h ZPStringBridge.h)
