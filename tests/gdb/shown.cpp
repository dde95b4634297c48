// SPDX-License-Identifier: MIT
// Objects of every form that the debugger shows, in variables of main; look.py looks at them where stop() is called.
#include <Bedrock/Bedrock.h>

#include <cstdlib>
#include <cstring>

struct Account : ZPObject {
    ZP_CLASS(Account)
    double balance;
    ZPString *owner;
};
ZP_IMPLEMENT(Account);

struct Savings : Account {
    ZP_CLASS(Savings)
    int rate;
};
ZP_IMPLEMENT(Savings);

// A class whose name says where it lies, one whose name does not, and one that only this file has.
namespace shop {
struct Till : ZPObject {
    ZP_CLASS(Till)
    int coins;
};
struct Shelf : Till {
    ZP_CLASS(Shelf)
    int boards;
};
ZP_IMPLEMENT(Shelf);
}  // namespace shop
ZP_IMPLEMENT(shop::Till);
namespace {
struct Drawer : ZPObject {
    ZP_PRIVATE_CLASS(Drawer)
    int knobs;
};
ZP_IMPLEMENT(Drawer);
}  // namespace

struct Stand : ZPProxy {
    ZP_CLASS(Stand)
    id target;
};
ZP_IMPLEMENT(Stand);

struct Fixed : ZPObject {
    ZP_CLASS(Fixed)
    int value;
};
ZP_IMPLEMENT(Fixed, staticInstances());

static volatile int stops;
extern "C" __attribute__((noinline)) void stop() { stops = 1; }

static Fixed fixed, fixedOften;

int main(int argc, char **argv) {
    ZPAutoreleasePoolScope pool;
    char upper[160];
    for (unsigned i = 0; i < 32; ++i) upper[i] = char(0x80 + i);
    std::memset(upper + 32, 'x', sizeof upper - 32);

    ZPString *literal = "a \"literal\"\n"_zp, *wideLiteral = "\u017eluva \u6f22 \U0001F600"_zp, *nothing = nullptr;
    ZPString *shortText = ZPString::stringWithCString("number 7"), *formatted = ZPString::stringWithFormat("%d"_zp, 7);
    ZPString *kestrel =
        ZPString::alloc()->initWithData_encoding(ZPData::dataWithBytes_length(upper, 32), ZPKESTRELStringEncoding);
    ZPString *bytes = ZPString::alloc()->initWithCStringNoCopy_length_freeWhenDone(
        static_cast<char *>(std::memset(std::malloc(3000), 'y', 3000)), 3000, YES);
    ZPString *part = bytes->substringWithRange({100, 60});
    unichar units[40];
    for (unsigned i = 0; i < 40; ++i) units[i] = unichar(0x3041 + i);
    units[1] = 0xD800;
    ZPString *wide = ZPString::stringWithCharacters_length(units, 40);
    ZPString *widePart = wide->substringWithRange({2, 30});
    ZPString *path = ZPPathStore2::pathStoreWithCString("C:\\data\\names");
    ZPMutableString *gap = ZPMutableString::stringWithCapacity(200);
    gap->appendString("onethree"_zp);
    gap->insertString_atIndex("two"_zp, 3);
    gap->deleteCharactersInRange({3, 1});
    ZPMutableString *wideGap = ZPMutableString::stringWithCapacity(200);
    wideGap->appendString("\u6f22\u6f22"_zp);
    wideGap->insertString_atIndex("\u5b57\u6f22"_zp, 1);
    wideGap->deleteCharactersInRange({2, 1});
    auto *cheap = reinterpret_cast<ZPCheapMutableString *>(ZPCheapMutableString::alloc()->init());
    cheap->setContentsNoCopy_length_freeWhenDone_isUnicode(const_cast<char *>("lent"), 4, NO, NO);

    ZPArray *list = ZPArray::arrayWithObjects("one"_zp, shortText, ZPArray::arrayWithObject("deep"_zp));
    ZPMutableArray *growing = ZPMutableArray::array();
    for (int i = 0; i < 1000; ++i) growing->addObject(shortText);
    ZPMutableArray *circle = ZPMutableArray::array();
    circle->addObject(circle);
    circle->addObject(circle);
    ZPDictionary *pairs = ZPDictionary::dictionaryWithObject_forKey("value"_zp, "key"_zp);
    ZPMutableDictionary *many = ZPMutableDictionary::dictionary();
    for (int i = 0; i < 300; ++i) many->setObject_forKey("v"_zp, ZPString::stringWithFormat("k%d"_zp, i));
    ZPSet *members = ZPSet::setWithObject("member"_zp);
    ZPCountedSet *bag = ZPCountedSet::set();
    bag->addObject("twice"_zp);
    bag->addObject("twice"_zp);
    ZPData *data = ZPData::dataWithBytes_length("\x01\x02\xff!?", 5);
    ZPData *largeData =
        ZPMutableData::dataWithData(ZPData::dataWithBytes_length(std::memset(std::malloc(5000), 7, 5000), 5000));
    ZPDate *date = ZPDate::dateWithTimeIntervalSinceReferenceDate(86400.5);
    ZPDate *calendar = ZPCalendarDate::dateWithYear_month_day_hour_minute_second_timeZone(
        1969, 7, 20, 15, 17, 40, ZPTimeZone::timeZoneForSecondsFromGMT(-18000));
    ZPException *error = ZPException::alloc()->initWithName_reason_userInfo("Name"_zp, "reason"_zp, pairs);
    Account *account = Account::new_();
    account->balance = 12.5;
    account->owner = "Ann"_zp;
    account->retain();
    account->retain();
    id any = account;
    auto *savings = Savings::new_();
    savings->balance = 7;
    savings->rate = 3;
    Account *savingsAsAccount = savings;
    ZPObject *savingsAsObject = savings, *till = shop::Till::new_(), *shelf = shop::Shelf::new_(),
             *drawer = Drawer::new_(), *lock = ZPLock::new_();
    static_cast<shop::Till *>(till)->coins = 20;
    static_cast<shop::Shelf *>(shelf)->boards = 4;
    static_cast<Drawer *>(drawer)->knobs = 2;
    Stand *stand = Stand::alloc();
    stand->target = account;
    auto *disguised = reinterpret_cast<Savings *>(stand);
    ZPRef<ZPArray> owned = list;
    Class cls = Account::class_();
    SEL selector = "objectAtIndex:"_sel;
    fixed.isa = fixedOften.isa = Fixed::class_();
    Fixed::class_();
    objc_msgSend<Class>(Fixed::class_(), "class"_sel);
    fixed.retain();
    for (int i = 0; i < 6; ++i) fixedOften.retain();
    Fixed *counted = &fixed, *countedOften = &fixedOften;

    // What is no object: a stray pointer, text, an object with a broken length, one whose elements lie nowhere.
    auto *stray = reinterpret_cast<ZPString *>(0x1234560);
    auto *nonsense = reinterpret_cast<ZPArray *>(upper + 32 - reinterpret_cast<std::uintptr_t>(upper) % 8);
    struct Forged {
        std::uintptr_t header;
        Class isa;
        std::uintptr_t words[4];
    };
    static Forged forgedString = {0, wide->isa, {16, 0xFFFFFFFF, 0, 0}},
                  forgedArray = {0, growing->isa, {0x7FFFFFF, 16, ~0u, 0}};
    static Forged forgedGap = {0, nullptr, {reinterpret_cast<std::uintptr_t>(upper), 5, 0xFFFFFFF000000001, 0}};
    // The library keeps such bytes only where they are the encoding of C strings.
    static Forged forgedBytes = {0, bytes->isa, {reinterpret_cast<std::uintptr_t>(upper), 32, 0, 0}};
    auto *kestrelBytes = reinterpret_cast<ZPString *>(&forgedBytes.isa);
    static unsigned forgedTable[4] = {0xFFFFFFFF, 0, 0, 0};
    static Forged forgedDictionary = {0, many->isa, {reinterpret_cast<std::uintptr_t>(forgedTable), 0, 0, 0}};
    forgedGap.isa = reinterpret_cast<ZPConcreteMutableString *>(gap)->_contents->isa;
    auto *brokenString = reinterpret_cast<ZPString *>(&forgedString.isa);
    auto *brokenArray = reinterpret_cast<ZPArray *>(&forgedArray.isa);
    auto *brokenGap = reinterpret_cast<ZPString *>(&forgedGap.isa);
    auto *brokenDictionary = reinterpret_cast<ZPDictionary *>(&forgedDictionary.isa);

    stop();
    if (argc > 1 && !std::strcmp(argv[1], "abort")) std::abort();
    return !(literal && wideLiteral && !nothing && kestrel && part && widePart && path && wideGap && cheap && circle &&
             members && bag && data && largeData && date && calendar && error && any && owned && cls && selector &&
             counted && countedOften && stray && nonsense && brokenString && brokenArray && brokenGap &&
             brokenDictionary && kestrelBytes && formatted && savingsAsAccount && savingsAsObject && shelf && drawer &&
             lock && disguised);
}
