// SPDX-License-Identifier: MIT
// Exceptions, handler records, assertions, the log, names and messages of the root class.
#include <support/Objects.h>

namespace {

struct Abstract : ZPObject {
    ZP_CLASS(Abstract)
    void count() { ZPRequestConcreteImplementation(this, "count"_sel, class_()); }
    id initEmpty() { _ZPRequestConcreteObject(this, "initEmpty"_sel); }
};
ZP_IMPLEMENT(Abstract, count, initEmpty);
struct Partial : Abstract {
    ZP_CLASS(Partial)
    void check(int n) { ZPAssert(n < 3, "check:"_sel, "%d is too much"_zp, n); }
};
ZP_IMPLEMENT(Partial, check);

struct Cleanup {
    int &count;
    ~Cleanup() { ++count; }
};

struct Unspeakable : ZPObject {
    ZP_CLASS(Unspeakable)
    ZPString *description() { ZPException::raise_format(ZPGenericException, "no words for %d"_zp, 3); }
};
ZP_IMPLEMENT(Unspeakable, description);

struct Errors : testing::Test {
    LogCapture log;
};

void uncaught(ZPUncaughtExceptionHandler *handler, void (*raise)()) {
    ZPPushAutoreleasePool(0);
    if (handler) ZPSetUncaughtExceptionHandler(handler);
    [&]() noexcept { raise(); }();
}
void raiseFour() { ZPException::raise_format(ZPRangeException, "four"_zp); }

}  // namespace

TEST_F(Errors, RaisesUnwindAndArriveWhole) {
    int cleaned = 0;
    try {
        Cleanup cleanup{cleaned};
        ZPException::raise_format(ZPRangeException, "%d"_zp, 5);
    } catch (ZPException *e) {
        EXPECT_EQ(cleaned, 1);
        EXPECT_TRUE(e->name()->isEqual(ZPRangeException));
        EXPECT_STREQ(e->reason()->cString(), "5");
        EXPECT_STREQ(e->description()->cString(), "5");
        EXPECT_TRUE(e->isEqual(ZPException::exceptionWithName_reason_userInfo(ZPRangeException, "6"_zp, nullptr)));
        EXPECT_FALSE(e->isEqual(ZPException::exceptionWithName_reason_userInfo(ZPGenericException, "5"_zp, nullptr)));
        EXPECT_EQ(e->copy(), e);
        e->release();
    }
    EXPECT_FALSE(ZPException::alloc()->init());
}

TEST_F(Errors, HandlerRecordsGiveCodeAndObject) {
    ZPHandlerRecord outer, inner;
    _ZPAddHandler(&outer);
    _ZPAddHandler(&inner);
    try {
        ZPException::raise_format(ZPGenericException, "inner"_zp);
    } catch (...) {
        EXPECT_STREQ(_ZPExceptionObjectFromHandler(&inner)->reason()->cString(), "inner");
        EXPECT_EQ(inner.code, 100000);
    }
    try {
        _QLRaiseError(12, 0xab, 0xcd);
    } catch (...) {
        ZPException *e = _ZPExceptionObjectFromHandler(&outer);
        EXPECT_TRUE(e->name()->isEqual(ZPOldStyleException));
        EXPECT_STREQ(e->reason()->cString(), "Old style exception with code 12 was raised with data (ab, cd)");
        EXPECT_EQ(outer.code, 12);
        EXPECT_EQ(outer.data2, 0xcdu);
    }
    // A C++ exception of somebody else's passes through.
    ZPHandlerRecord foreign;
    _ZPAddHandler(&foreign);
    EXPECT_THROW(
        try { throw 5; } catch (...) { _ZPExceptionObjectFromHandler(&foreign); }, int);
}

TEST_F(Errors, MessagesOfTheRootClass) {
    ZPObject *object = ZPObject::new_()->autorelease(), *abstract = Abstract::new_()->autorelease(),
             *partial = Partial::new_()->autorelease();
    ZPProxy *proxy = ZPProxy::alloc();
    const std::pair<std::function<void()>, const char *> cases[] = {
        {[&] { object->performSelector(nullptr); }, "-[ZPObject performSelector:]: null selector"},
        {[&] { objc_msgSend<int>(object, "fly:"_sel, 3); }, "-[ZPObject fly:]: selector not recognized"},
        {[&] { objc_msgSend(ZPObject::class_(), "fly"_sel); }, "+[ZPObject fly]: selector not recognized"},
        {[&] { ZPStringFromSelector(nullptr); }, "ZPStringFromSelector(): 0 selector"},
        {[&] { objc_msgSend(abstract, "count"_sel); },
         "-count cannot be sent to an abstract object of class Abstract: Create a concrete instance!"},
        {[&] { objc_msgSend(partial, "count"_sel); },
         "-count only defined for abstract class.  Define -[Partial count]!"},
        {[&] { objc_msgSend<id>(partial, "initEmpty"_sel); },
         "initialization method -initEmpty cannot be sent to an abstract object of class Partial: "
         "Create a concrete instance!"},
        {[&] { proxy->isKindOfClass(ZPObject::class_()); }, "-[ZPProxy methodSignatureForSelector:] called!"},
    };
    for (auto &[body, reason] : cases)
        EXPECT_EQ(raised(body), std::string("ZPInvalidArgumentException: *** ") + reason);
    EXPECT_EQ(log.text.find("*** -[ZPObject fly:]: selector not recognized"), 0u);
    proxy->release();
    EXPECT_EQ(ZPClassObject(ZPObject::class_())->retainCount(), 0xFFFFFFFFu);
    EXPECT_STREQ(ZPClassObject(Partial::class_())->description()->cString(), "Partial");
}

TEST_F(Errors, AssertionsLogWhereAndRaise) {
    Partial *object = Partial::new_()->autorelease();
    EXPECT_RAISES("ZPInternalInconsistencyException: 4 is too much", object->check(4));
    EXPECT_EQ(log.text.find("*** Assertion failure in -[Partial check:], "), 0u) << log.text;
    EXPECT_RAISES("ZPInternalInconsistencyException: no", ZPCAssert(1 > 2, "no"_zp));
    EXPECT_HAS(log.text, "*** Assertion failure in operator()(), ");
}

TEST_F(Errors, TheLogWritesOneLine) {
    ZPLog("%@ and %s"_zp, "x"_zp, "y");
    EXPECT_EQ(log.text, "x and y");
    EXPECT_TRUE(log.banner);
    _ZPSetLogCStringFunction(nullptr);
    auto written = [](auto write) {
        testing::internal::CaptureStderr();
        write();
        return testing::internal::GetCapturedStderr();
    };
    for (ZPString *text : {"abc"_zp, "abc\n"_zp}) {
        std::string line = written([=] { ZPLog("%@"_zp, text); });
        EXPECT_EQ(line.substr(3, 1) + line.substr(9, 1), " :");
        EXPECT_HAS(line, "test_core[");
        EXPECT_TRUE(line.ends_with("] abc\n")) << line;
    }
    EXPECT_GT(written([] { ZPLog("%s"_zp, std::string(40000, 'z').c_str()); }).size(), 40000u);
    EXPECT_EQ(written([] { _ZPBasicStdErrLog("%s\n", std::string(5000, 'z').c_str()); }).size(), 1023u);
}

TEST_F(Errors, AnExceptionOutlivesTheLogThatMetIt) {
    ZPRef<Unspeakable> it = ZPAdopt(Unspeakable::new_());
    EXPECT_REASON("no words for 3", ZPLog("%@"_zp, it.get()));
    EXPECT_EQ(log.text, "");
}

TEST_F(Errors, NamesBothWays) {
    EXPECT_EQ(ZPClassFromString("Partial"_zp), Partial::class_());
    EXPECT_EQ(ZPClassFromString("Nowhere"_zp), nullptr);
    EXPECT_STREQ(ZPStringFromSelector(ZPSelectorFromString("a:b:"_zp))->cString(), "a:b:");
    _ZPAltClassNameFromString = [](ZPString *) { return Abstract::class_(); };
    EXPECT_EQ(ZPClassFromString("Nowhere"_zp), Abstract::class_());
    _ZPAltClassNameFromString = nullptr;
    for (ZPString *yes : {"YES"_zp, "Yes"_zp, "y"_zp}) EXPECT_TRUE(ZPBOOLFromString(yes));
    for (ZPString *no : {"yesterday"_zp, ""_zp, "n"_zp, "y\0s"_zp, "\346\227\245"_zp})
        EXPECT_FALSE(ZPBOOLFromString(no));
}

TEST(UncaughtDeathTest, IsLoggedAndEndsTheProcess) {
    EXPECT_DEATH(uncaught(nullptr, raiseFour), "\\*\\*\\* Uncaught exception: <ZPRangeException> four\nstack: 0x");
    EXPECT_EXIT(uncaught([](ZPException *e) { std::_Exit(e->reason()->length()); }, raiseFour),
                testing::ExitedWithCode(4), "");
    EXPECT_EXIT(uncaught([](ZPException *e) { std::_Exit(int(reinterpret_cast<std::uintptr_t>(e))); },
                         [] { _QLRaiseError(100001, 9, 0); }),  // a code at or above an exception's own
                testing::ExitedWithCode(9), "");
}

namespace {

struct Uncopied : ZPObject {
    ZP_CLASS(Uncopied)
    id copyWithZone(ZPZone *) { ZPException::raise_format(ZPGenericException, "no copy"_zp); }
};
ZP_IMPLEMENT(Uncopied, copyWithZone);

struct Pair {
    static inline bool wasNull;
    id key, value;
    ~Pair() { wasNull = !key && !value; }
};
[[gnu::noinline]] void fill(id key) {
    Pair pair;
    pair.key = key->copyWithZone(nullptr);
    pair.value = key->retain();
}
[[gnu::noinline]] void writeOnTheStack() {
    volatile long words[200];
    for (auto &word : words) word = -1;
}

}  // namespace

TEST(Exception, AFieldIsNullUntilItsValueIsMade) {
    static_assert(std::is_trivially_copyable_v<id>);
    writeOnTheStack();
    EXPECT_REASON("no copy", fill(Uncopied::new_()->autorelease()));
    EXPECT_TRUE(Pair::wasNull);
}
