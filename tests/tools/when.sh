#!/bin/sh
# SPDX-License-Identifier: MIT
# The when tool from outside: results, complaints, exit statuses. usage: when.sh WHEN
when=$1; failures=0
TZ=America/New_York; export TZ
expect() { # expect STATUS OUTPUT COMMAND...
    status=$1 output=$2; shift 2
    got=$("$@" 2>&1); was=$?
    [ "$was" = "$status" ] || { echo "$*: status $was, not $status: $got" | head -5; failures=1; }
    case $got in *"$output"*) ;; *) echo "$*: no '$output' in: $got" | head -5; failures=1 ;; esac
}
expect 0 '2001-01-01 04:00:00 -0500' "$when" --zone -0500 show '2001-01-01 10:00:00 +0100'
expect 0 '2001-01-01 10:00:00 +0530' "$when" --zone +05:30 show '2001-01-01 10:00'
expect 0 'Monday, 1 January 2001, day 001' "$when" --zone GMT --format '%A, %e %B %Y, day %j' show 2001-01-01
expect 0 '1970-01-01 00:00:00 +0000' "$when" --zone Z show @0
expect 0 '03/04/29' "$when" --input '%d.%m.%y' --format '%m/%d/%y' show 4.3.29
expect 0 '2000-02-29' "$when" --format %Y-%m-%d add 2000-01-31 1 month
expect 0 '2000-03-14' "$when" --format %Y-%m-%d add 2000-01-31 1 month 2 weeks
expect 0 '1999-12-31 23:59:59' "$when" add 2000-01-01 -1 second
expect 0 '1 month 1 day' "$when" between 2000-01-31 2000-03-01
expect 0 '-1 month -1 day' "$when" between 2000-03-01 2000-01-31
expect 0 '0 seconds' "$when" between 2000-03-01 2000-03-01
[ -e /usr/share/zoneinfo/America/New_York ] && {
    expect 0 '2020-07-01 12:00:00 -0400' "$when" show '2020-07-01 12:00'
    expect 0 '2020-03-08 12:00:00 -0400' "$when" add '2020-03-07 12:00' 1 day
    expect 0 '12:00 EDT' "$when" --zone EST --format '%H:%M %Z' show '2020-07-01 12:00'
}
expect 0 "$(date +%Y)" "$when" show
expect 1 'tomorrowish: no date' "$when" show tomorrowish
expect 1 'no time zone' "$when" --zone Nowhere show
[ -e /dev/full ] && expect 1 'cannot write: ' sh -c "'$when' show >/dev/full"
expect 1 'no time zone' "$when" --zone +12345 show
expect 1 'x: no count' "$when" add 2000-01-01 x days
expect 1 'fortnight: no unit' "$when" add 2000-01-01 1 fortnight
expect 1 'no number of seconds' "$when" show @x
expect 2 'usage: when' "$when"
expect 2 'usage: when' "$when" add 2000-01-01 1
expect 2 'usage: when' "$when" --format
expect 0 'usage: when' "$when" --help
exit $failures
