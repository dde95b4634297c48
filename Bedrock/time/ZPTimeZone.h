// SPDX-License-Identifier: MIT
// Time zones, and the details of which they consist.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPArray);
ZP_FORWARD(ZPDate);
ZP_FORWARD(ZPTimeZoneDetail);

/// A time zone: it answers for a date the detail that is in force then. Immutable; any thread may use it. A
/// subclass supplies the name. Zones and details that are answered are borrowed: those of the library live as long
/// as the process.
struct ZPTimeZone : ZPObject {
    ZP_CLASS(ZPTimeZone)

    /// The zone that calendar dates have when none is given: a detail of the host's zone unless it has been set; one
    /// that was set lasts until the caller's pool goes.
    static ZPTimeZoneDetail *defaultTimeZone() ZP_CLASS_ASKS();
    /// Makes the zone's detail for the current date the default of the process, which retains it until another is set;
    /// null: the host's zone.
    static void setDefaultTimeZone(ZPTimeZone *zone) ZP_CLASS_TELLS(zone);
    /// One object that stands for whatever zone is the default when it is asked.
    static ZPTimeZoneDetail *localTimeZone() ZP_CLASS_ASKS();
    /// A zone known by its name; null otherwise.
    static ZPTimeZone *timeZoneWithName(ZPString *name) ZP_CLASS_ASKS(name);
    /// The detail with an abbreviation ("EST"); null when it is not known.
    static ZPTimeZoneDetail *timeZoneWithAbbreviation(ZPString *abbreviation) ZP_CLASS_ASKS(abbreviation);
    /// A detail at a fixed distance from GMT, positive to the east, named "GMT+0100". One that was made before for the
    /// same hours and minutes is answered again.
    static ZPTimeZoneDetail *timeZoneForSecondsFromGMT(int seconds) ZP_CLASS_ASKS(seconds);
    /// The detail with the abbreviation, or else the zone with the name; null when neither is known.
    static ZPTimeZone *timeZoneForKey(ZPString *key) ZP_CLASS_ASKS(key);

    /// The name; borrowed.
    ZPString *timeZoneName() ZP_ASKS();
    /// Every detail of the zone that is known; autoreleased.
    ZPArray *timeZoneDetailArray() ZP_ASKS();
    /// The detail in force at a date.
    ZPTimeZoneDetail *timeZoneDetailForDate(ZPDate *date) ZP_ASKS(date);
};

/// One offset of a zone with its abbreviation.
struct ZPTimeZoneDetail : ZPTimeZone {
    ZP_CLASS(ZPTimeZoneDetail)

    /// A detail at a fixed distance, without daylight saving; copies the strings.
    ZPTimeZoneDetail *initWithName_abbreviation_secondsFromGMT(ZPString *name, ZPString *abbreviation, int seconds)
        ZP_ASKS(name, abbreviation, seconds);
    /// The distance from GMT in seconds, positive to the east.
    int timeZoneSecondsFromGMT() ZP_ASKS();
    /// The short name, as "CET"; borrowed.
    ZPString *timeZoneAbbreviation() ZP_ASKS();
    /// Whether it is a zone's summer time.
    BOOL isDaylightSavingTimeZone() ZP_ASKS();
};
