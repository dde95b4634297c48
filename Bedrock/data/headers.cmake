set(PUBLIC_HEADERS ZPData.h ZPFileMapper.h)
