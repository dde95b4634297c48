set(PUBLIC_HEADERS ZPStringEncoding.h ZPMutableString.h)
