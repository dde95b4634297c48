set(PUBLIC_HEADERS ZPSimpleHashing.h ZPHashTable.h ZPMapTable.h)
