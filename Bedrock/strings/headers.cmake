# SPDX-License-Identifier: MIT
set(PUBLIC_HEADERS ZPString.h ZPStringEncoding.h ZPMutableString.h ZPPathUtilities.h ZPCharacterSet.h ZPNumberReader.h ZPScanner.h)
