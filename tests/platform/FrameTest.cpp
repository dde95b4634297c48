// SPDX-License-Identifier: MIT
// Every C++ type as argument and result: called, from a frame, forwarded, and sent to null.
#include <Bedrock/core/ZPRef.h>
#include <gtest/gtest.h>

#include <string>

namespace {

struct Target : ZPObject {
    ZP_CLASS(Target)
};
ZP_IMPLEMENT(Target);

struct Relay : ZPObject {
    ZP_CLASS(Relay)
    Target *_to;
    void forward(SEL selector, objc_frame *frame) {
        objc_sendFrame(_to, selector, frame->length, frame->arguments, frame->result, frame->resultSize);
    }
};
ZP_IMPLEMENT(Relay, named(forward, "forward::"));

template <unsigned N> struct Bytes { unsigned char of[N]; };
union Either {
    char text[72];
    int number;
};
struct alignas(16) Wide {
    double value, other;
};
// A sender that wants no answer has room for one in registers alone.
static_assert(objc_resultIsHidden<Either>() && objc_resultIsHidden<Bytes<9>>() && !objc_resultIsHidden<Bytes<8>>());

template <class T> T sample(int seed) {
    T value{};
    if constexpr (std::is_floating_point_v<T>) value = T(seed) * T(1.25);
    else std::memset(static_cast<void *>(&value), std::is_same_v<T, bool> ? seed & 1 : seed, sizeof value);
    return value;
}
template <class T> bool same(T a, T b) {
    if constexpr (std::is_floating_point_v<T>) return a == b;
    else return !std::memcmp(&a, &b, sizeof a);
}

// The argument lies at an odd word of the frame the first time, and behind smaller ones.
template <class T> T answerSecond(objc_object *, SEL, char c, T first, short s, T second) {
    EXPECT_TRUE(c == 'c' && s == -3 && same(first, sample<T>(3)));
    return second;
}

template <class T> void carry(Target *target, Relay *relay) {
    SEL selector = sel_registerName((std::string(ZPEncode<T>()) + "::::").c_str());
    class_addMethod(Target::class_(), selector, IMP(&answerSecond<T>), objc_methodTypes<T, char, T, short, T>(),
                    &objc_invokeFrame<T, char, T, short, T>, objc_frameLength<T, char, T, short, T>);
    for (id receiver : {id(target), id(relay), id()}) {
        T answer = objc_msgSend<T>(receiver, selector, 'c', sample<T>(3), short(-3), sample<T>(9));
        EXPECT_TRUE(same(answer, receiver ? sample<T>(9) : T{})) << sel_getName(selector);
    }
}
template <class... T> void carryAll() {
    ZPRef<Target> target = ZPAdopt(Target::new_());
    ZPRef<Relay> relay = ZPAdopt(Relay::new_());
    relay->_to = target;
    (carry<T>(target, relay), ...);
}

}  // namespace

TEST(Frame, CarriesEveryType) {
    carryAll<char, bool, short, unichar, int, unsigned, long, float, double, long double, __int128, char *, SEL, Class,
             Bytes<1>, Bytes<2>, Bytes<3>, Bytes<4>, Bytes<7>, Bytes<8>, Bytes<9>, Bytes<16>, Bytes<17>, Bytes<63>,
             Bytes<64>, Bytes<200>, Wide, Either>();
}
