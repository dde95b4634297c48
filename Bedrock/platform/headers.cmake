# SPDX-License-Identifier: MIT
set(PUBLIC_HEADERS ZPPath.h ZPTypes.h ZPTypeEncoding.h ZPList.h ZPClass.h ZPMessage.h ZPImplement.h ZPProtocol.h ZPRuntime.h ZPZone.h)
