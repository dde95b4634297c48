// SPDX-License-Identifier: MIT
// The time stamp of the log, which a higher floor writes.
#pragma once

/// Writes the time as the log shows it, "Nov 22 20:15:00", NUL-terminated; defined in time/. Called without the log's
/// lock; does not log, raise, or need memory once it has run.
void _ZPLogTimeStamp(char text[32]);
