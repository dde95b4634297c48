// SPDX-License-Identifier: MIT
// What the library makes on the way goes again when a client's object raises in the middle. The made object would hold
// what the client gave: so that is asked how often it is retained.
#include <support/Objects.h>

namespace {

[[noreturn]] void refuse() { ZPException::raise_format(ZPGenericException, "no"_zp); }

struct RaisingText : ZPString {
    ZP_CLASS(RaisingText)
    BOOL _copies;
    unsigned length() { return 3; }
    unichar characterAtIndex(unsigned index) { return unichar('a' + index); }
    id copyWithZone(ZPZone *) {
        if (!_copies) refuse();
        return self()->retain();
    }
    static RaisingText *make(BOOL copies) {
        RaisingText *made = alloc();
        made->_copies = copies;
        return made->autorelease();
    }
};
ZP_IMPLEMENT(RaisingText, length, characterAtIndex, copyWithZone);

struct RaisingScanner : ZPScanner {
    ZP_CLASS(RaisingScanner)
    ZPString *_text;
    ZPString *string() { return _text; }
    ZPCharacterSet *charactersToBeSkipped() { refuse(); }
};
ZP_IMPLEMENT(RaisingScanner, string, charactersToBeSkipped);

struct RaisingData : ZPData {
    ZP_CLASS(RaisingData)
    unsigned length() { refuse(); }
    id copyWithZone(ZPZone *) { return self()->retain(); }
};
ZP_IMPLEMENT(RaisingData, length, copyWithZone);

/// Runs what raises; answers how many references to the object are left over.
template <class F> int leftOver(id object, F f) {
    unsigned before = object->retainCount();
    {
        ZPAutoreleasePoolScope pool;
        EXPECT_EQ(raised(f), "ZPGenericException: no");
    }
    return int(object->retainCount()) - int(before);
}

TEST(RaisingClients, nothingIsLeft) {
    ZPAutoreleasePoolScope pool;
    RaisingText *text = RaisingText::make(YES);
    ZPRef<RaisingScanner> scanner = ZPAdopt<RaisingScanner>(RaisingScanner::alloc());
    scanner->_text = text;
    EXPECT_EQ(leftOver(text, [&] { static_cast<ZPObject *>(scanner)->copy(); }), 0);

    ZPRef<RaisingData> data = ZPAdopt<RaisingData>(RaisingData::alloc());
    EXPECT_EQ(leftOver(id(data), [&] { ZPCharacterSet::characterSetWithBitmapRepresentation(data); }), 0);

    // The moment's calendar date has the zone when it copies the format.
    ZPTimeZone *zone = ZPTimeZone::timeZoneForSecondsFromGMT(5400);
    ZPDate *date = ZPDate::dateWithTimeIntervalSinceReferenceDate(0);
    EXPECT_EQ(leftOver(id(zone), [&] { date->dateWithCalendarFormat_timeZone(RaisingText::make(NO), zone); }), 0);

    // Without a count to ask: the sanitizer's run sees what is lost.
    raised([] { ZPScanner::scannerWithString(RaisingText::make(NO)); });
    raised([] { ZPMutableString::alloc()->initWithString(RaisingText::make(NO)); });
}

}  // namespace
