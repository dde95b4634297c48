// SPDX-License-Identifier: MIT
// Sending: results and arguments of every kind, null receivers, frames, forwarding, supers.
#include <support/Objects.h>

#include <cstdarg>

namespace {

struct Big {
    double a, b, c;
    bool operator==(const Big &) const = default;
};
struct Small {
    int a, b;
    bool operator==(const Small &) const = default;
};

struct Shape : ZPObject {
    ZP_CLASS(Shape)
    int _sides;
    int sides() ZP_ASKS();
    int sidesPlus(int n) ZP_ASKS(n);
};

struct ShapeMethods : Shape {
    int sides() { return _sides; }
    int sidesPlus(int n) { return self()->sides() + n; }
    void setSides(int n) { _sides = n; }
    Big bigWith_and_and(double a, Small s, float f) { return {a, double(s.a + s.b), f}; }
    Small small_and(signed char c, long long q) { return {c, int(q)}; }
    double half(float f) { return f / 2; }
    const std::string &same(const std::string &s) { return s; }
    int sum(int shapeCount, std::va_list rest) {
        int total = 0;
        while (shapeCount-- > 0) total += va_arg(rest, int);
        return total;
    }
    static int shapeCount(Class) { return 7; }
    static Class receiver(Class self) { return self; }
};

struct Square : Shape {
    ZP_CLASS(Square)
};
struct SquareMethods : Square {
    int sides() { return 4; }
    int superSides() { return ZP_SUPER(Square, sides)(); }
};

// Records what it is asked for and answers through the frame.
struct Catcher : ZPObject {
    ZP_CLASS(Catcher)
    SEL _last;
    std::string *_types;
    long _sum;
    void forward(SEL selector, objc_frame *frame) {
        _last = selector;
        *_types = frame->types;
        char *slots = static_cast<char *>(frame->arguments) + (frame->hasHiddenResult ? 8 : 0);
        if (selector == "add:to:"_sel) {
            long a, b;
            std::memcpy(&a, slots + 16, 8);
            std::memcpy(&b, slots + 24, 8);
            a += b;
            std::memcpy(frame->result, &a, 8);
        } else if (selector == "big:"_sel) {
            Big big{1, 2, 0};
            std::memcpy(&big.c, slots + 16, 8);
            std::memcpy(frame->result, &big, sizeof big);
        }
    }
};

// Hands every message on to another object.
struct Passer : ZPObject {
    ZP_CLASS(Passer)
    id _to;
    void forward(SEL selector, objc_frame *frame) {
        objc_sendFrame(_to.pointer(), selector, frame->length, frame->arguments, frame->result, frame->resultSize);
    }
};
ZP_IMPLEMENT(Passer, named(forward, "forward::"));

ZP_IMPLEMENT_WITH(Shape, ShapeMethods, sides, sidesPlus, setSides, bigWith_and_and, small_and, half, same,
                  variadic(sum), classMethods(shapeCount, receiver));
ZP_IMPLEMENT_WITH(Square, SquareMethods, sides, superSides);
ZP_IMPLEMENT(Catcher, named(forward, "forward::"));

}  // namespace

struct Message : testing::Test {
    ZPRef<Shape> held = ZPAdopt((Shape *)Shape::new_());
    Shape *shape = held.get();
};

TEST_F(Message, FindsTheReceiversOwnMethodAndInheritsTheRest) {
    ZPRef<Shape> square = ZPAdopt((Shape *)Square::new_());
    objc_msgSend(shape, "setSides:"_sel, 3);
    objc_msgSend(square.get(), "setSides:"_sel, 9);
    EXPECT_EQ(shape->sidesPlus(1), 4);
    EXPECT_EQ(square->sidesPlus(1), 5);
    EXPECT_EQ(objc_msgSend<int>(square.get(), "superSides"_sel), 9);
    EXPECT_EQ(objc_msgSend<int>(Square::class_(), "shapeCount"_sel), 7);
    EXPECT_EQ(objc_msgSend<Class>(Square::class_(), "receiver"_sel), Square::class_());
}

TEST_F(Message, CarriesEveryKindOfArgumentAndResultAlsoPassedOnInFrames) {
    ZPRef<Passer> passer = ZPAdopt(Passer::new_());
    passer->_to = shape;
    for (ZPObject *to : {(ZPObject *)shape, (ZPObject *)passer.get()}) {
        objc_msgSend<void>(to, "setSides:"_sel, 5);
        EXPECT_EQ(objc_msgSend<int>(to, "sidesPlus:"_sel, 2), 7);
        EXPECT_EQ(objc_msgSend<double>(to, "half:"_sel, 3.0f), 1.5);
        EXPECT_EQ(objc_msgSend<Small>(to, "small:and:"_sel, (signed char)-3, 1LL << 20), (Small{-3, 1 << 20}));
        EXPECT_EQ(objc_msgSend<Big>(to, "bigWith:and:and:"_sel, 1.5, Small{2, 3}, 0.25f), (Big{1.5, 5, 0.25}));
        std::string text = "same";
        EXPECT_EQ((&objc_msgSend<const std::string &, const std::string &>(to, "same:"_sel, text)), &text);
    }
    // What follows the named arguments is in no frame.
    EXPECT_DEATH((objc_sendVariadic<int, int>::send(passer.get(), "sum:"_sel, 2, 3, 4)), "cannot be sent with a frame");
}

TEST_F(Message, ToNullAnswersZero) {
    id nothing;
    EXPECT_EQ(objc_msgSend<int>(nothing, "sides"_sel), 0);
    EXPECT_EQ(objc_msgSend<double>(nothing, "half:"_sel, 5.0f), 0);
    EXPECT_EQ(objc_msgSend<Big>(nothing, "bigWith:and:and:"_sel, 1.0, Small{}, 0.f).a, 0);
    EXPECT_FALSE(objc_msgSend<id>(nothing, "self"_sel));
    objc_msgSend(nothing, "setSides:"_sel, 1);
    Shape *volatile hidden = nullptr;
    Shape *null = hidden;  // through a front too
    EXPECT_EQ(null->sides(), 0);
    EXPECT_EQ(null->hash(), 0u);
    EXPECT_FALSE(null->retain());
    EXPECT_FALSE(nothing->autorelease());
    null->release();
}

TEST_F(Message, FramesCarryWhatCallsCarry) {
    struct {
        objc_object *self;
        SEL op;
        long sides;
    } set{shape, "setSides:"_sel, 6};
    objc_msgSendv<void>(shape, "setSides:"_sel, sizeof set, &set);
    EXPECT_EQ(objc_msgSendv<int>(shape, "sides"_sel, 16, &set), 6);
    Big big{};
    struct {
        Big *result;
        objc_object *self;
        SEL op;
        double a;
        Small s;
        float f;
        int pad;
    } frame{&big, shape, "bigWith:and:and:"_sel, 1.5, {2, 3}, 0.5f, 0};
    EXPECT_EQ(shape->methodArgSize("bigWith:and:and:"_sel), sizeof frame);
    objc_msgSendv<void>(shape, "bigWith:and:and:"_sel, sizeof frame, &frame);
    EXPECT_EQ(big, (Big{1.5, 5, 0.5}));
    EXPECT_EQ(shape->methodArgSize("unheardOf"_sel), 0u);
}

TEST_F(Message, UnknownSelectorsAreForwardedWithTheirFrame) {
    Catcher *catcher = Catcher::new_();
    std::string types;
    catcher->_types = &types;
    EXPECT_EQ(objc_msgSend<long>(catcher, "add:to:"_sel, 40L, 2L), 42);
    EXPECT_EQ(types, "q@:qq");
    EXPECT_EQ(catcher->_last, "add:to:"_sel);
    EXPECT_EQ(objc_msgSend<Big>(catcher, "big:"_sel, 3.5).c, 3.5);
    objc_msgSend(catcher, "nothing:"_sel, id(catcher));
    EXPECT_EQ(types, "v@:@");
    struct {
        objc_object *self;
        SEL op;
        long a, b;
    } frame{catcher, "add:to:"_sel, 1, 2};
    EXPECT_EQ(objc_msgSendv<long>(catcher, "add:to:"_sel, sizeof frame, &frame), 3);
    objc_msgSendv<void>(catcher, "add:to:"_sel, sizeof frame, &frame);  // an answer nobody wants still has room
    catcher->release();
}

TEST_F(Message, ThousandsOfSelectorsShareACache) {
    objc_msgSend(shape, "setSides:"_sel, 5);
    auto answer = +[](objc_object *, SEL selector) { return selector; };
    for (int i = 0; i < 3000; ++i) {
        SEL selector = sel_registerName(("generated" + std::to_string(i)).c_str());
        class_addMethod(Shape::class_(), selector, reinterpret_cast<IMP>(answer), objc_methodTypes<SEL>(), nullptr, 16);
    }
    for (int pass = 0; pass < 2; ++pass)
        for (int i = 0; i < 3000; ++i) {
            SEL selector = sel_registerName(("generated" + std::to_string(i)).c_str());
            ASSERT_EQ(objc_msgSend<SEL>(shape, selector), selector);
        }
    EXPECT_EQ(shape->sides(), 5);
}
