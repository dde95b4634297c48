set(PUBLIC_HEADERS ZPString.h ZPStringEncoding.h ZPMutableString.h ZPCharacterSet.h ZPNumberReader.h)
