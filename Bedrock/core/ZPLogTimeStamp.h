// SPDX-License-Identifier: MIT
// The time stamp of the log, which a higher floor supplies.
#pragma once

/// Writes the time as the log shows it, "Nov 22 20:15:00", NUL-terminated. Called without the log's lock; must not log,
/// raise, or need memory once it has run.
using _ZPLogTimeStampFunction = void(char text[32]);
/// Replaces the host's time stamp; for static initialisation.
void _ZPSetLogTimeStampFunction(_ZPLogTimeStampFunction *function);
