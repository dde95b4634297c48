# SPDX-License-Identifier: MIT
set(PUBLIC_HEADERS ZPCalendarDate.h ZPDate.h ZPLocale.h ZPTimeZone.h)
