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

    /// The zone that calendar dates have when none is given: a detail of the host's zone unless it has been set.
    static ZPTimeZoneDetail *defaultTimeZone() {
        return objc_msgSend<ZPTimeZoneDetail *>(class_(), "defaultTimeZone"_sel);
    }
    /// Makes the zone's detail for the current date the default of the process, which retains it until another is set;
    /// null: the host's zone.
    static void setDefaultTimeZone(ZPTimeZone *zone) { objc_msgSend(class_(), "setDefaultTimeZone:"_sel, zone); }
    /// One object that stands for whatever zone is the default when it is asked.
    static ZPTimeZoneDetail *localTimeZone() { return objc_msgSend<ZPTimeZoneDetail *>(class_(), "localTimeZone"_sel); }
    /// A zone known by its name; null otherwise.
    static ZPTimeZone *timeZoneWithName(ZPString *name) {
        return objc_msgSend<ZPTimeZone *>(class_(), "timeZoneWithName:"_sel, name);
    }
    /// The detail with an abbreviation ("EST"); null when it is not known.
    static ZPTimeZoneDetail *timeZoneWithAbbreviation(ZPString *abbreviation) {
        return objc_msgSend<ZPTimeZoneDetail *>(class_(), "timeZoneWithAbbreviation:"_sel, abbreviation);
    }
    /// A detail at a fixed distance from GMT, positive to the east, named "GMT+0100". One that was made before for the
    /// same hours and minutes is answered again.
    static ZPTimeZoneDetail *timeZoneForSecondsFromGMT(int seconds) {
        return objc_msgSend<ZPTimeZoneDetail *>(class_(), "timeZoneForSecondsFromGMT:"_sel, seconds);
    }
    /// The detail with the abbreviation, or else the zone with the name; null when neither is known.
    static ZPTimeZone *timeZoneForKey(ZPString *key) {
        return objc_msgSend<ZPTimeZone *>(class_(), "timeZoneForKey:"_sel, key);
    }

    /// The name; borrowed.
    ZPString *timeZoneName() { return objc_msgSend<ZPString *>(this, "timeZoneName"_sel); }
    /// Every detail of the zone that is known; autoreleased.
    ZPArray *timeZoneDetailArray() { return objc_msgSend<ZPArray *>(this, "timeZoneDetailArray"_sel); }
    /// The detail in force at a date.
    ZPTimeZoneDetail *timeZoneDetailForDate(ZPDate *date) {
        return objc_msgSend<ZPTimeZoneDetail *>(this, "timeZoneDetailForDate:"_sel, date);
    }
};

/// One offset of a zone with its abbreviation.
struct ZPTimeZoneDetail : ZPTimeZone {
    ZP_CLASS(ZPTimeZoneDetail)

    /// A detail at a fixed distance, without daylight saving; copies the strings.
    ZPTimeZoneDetail *initWithName_abbreviation_secondsFromGMT(ZPString *name, ZPString *abbreviation, int seconds) {
        return objc_msgSend<ZPTimeZoneDetail *>(this, "initWithName:abbreviation:secondsFromGMT:"_sel, name,
                                                abbreviation, seconds);
    }
    /// The distance from GMT in seconds, positive to the east.
    int timeZoneSecondsFromGMT() { return objc_msgSend<int>(this, "timeZoneSecondsFromGMT"_sel); }
    /// The short name, as "CET"; borrowed.
    ZPString *timeZoneAbbreviation() { return objc_msgSend<ZPString *>(this, "timeZoneAbbreviation"_sel); }
    /// Whether it is a zone's summer time.
    BOOL isDaylightSavingTimeZone() { return objc_msgSend<BOOL>(this, "isDaylightSavingTimeZone"_sel); }
};
