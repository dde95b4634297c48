set(PUBLIC_HEADERS ZPTypes.h ZPTypeEncoding.h ZPClass.h ZPMessage.h ZPImplement.h ZPProtocol.h ZPRuntime.h ZPZone.h)
