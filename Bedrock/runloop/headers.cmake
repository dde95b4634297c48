# SPDX-License-Identifier: MIT
set(PUBLIC_HEADERS ZPNotification.h ZPNotificationCenter.h)
