set(PUBLIC_HEADERS ZPParser.h ZPPropertyList.h)
