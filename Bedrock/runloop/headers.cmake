set(PUBLIC_HEADERS ZPNotification.h ZPNotificationCenter.h)
