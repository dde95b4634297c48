// SPDX-License-Identifier: MIT
// The zone classes behind the fronts.
#pragma once

#include <Bedrock/time/ZPTimeZone.h>

/// A fixed detail.
struct ZPConcreteTimeZone : ZPTimeZoneDetail {
    ZP_PRIVATE_CLASS(ZPConcreteTimeZone)
    ZPString *_timeZoneName;
    int _timeZoneSecondsFromGMT;
    ZPString *_abbreviation;
};

/// One of the details that the host's zone takes in turn: asked for another date, it asks the host again.
struct ZPHostTimeZoneDetail : ZPConcreteTimeZone {
    ZP_PRIVATE_CLASS(ZPHostTimeZoneDetail)
    BOOL _isDaylight;
};

/// The host's detail at a moment, always the same object for the same offset, abbreviation and kind.
ZPTimeZoneDetail *_ZPHostDetailAt(double timeSinceReferenceDate);
/// The detail of a zone at a moment (null: of the default zone). `holder` is the date, for zones that want one.
ZPTimeZoneDetail *_ZPDetailAt(ZPTimeZone *zone, double timeSinceReferenceDate, ZPDate *holder);

inline bool _ZPIsOwnDetail(ZPTimeZoneDetail *detail) {
    return detail && (detail->isa == ZPConcreteTimeZone::class_() || detail->isa == ZPHostTimeZoneDetail::class_());
}
/// The offset of a detail; 0 for null.
inline int _ZPOffsetOf(ZPTimeZoneDetail *detail) {
    if (_ZPIsOwnDetail(detail)) return static_cast<ZPConcreteTimeZone *>(detail)->_timeZoneSecondsFromGMT;
    return detail->timeZoneSecondsFromGMT();
}
