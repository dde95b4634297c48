// SPDX-License-Identifier: MIT
// A class, a category and a protocol of a client's own, with the installed headers alone.
#include <Bedrock/Bedrock.h>

#include <iostream>
#include <string>
#include <vector>

struct Priced {
    ZP_PROTOCOL(Priced)
    double price();
};
ZP_DEFINE_PROTOCOL(Priced, price);

struct Basket : ZPObject {
    ZP_CLASS(Basket)
    std::vector<double> _prices;
    Basket *add(double price) ZP_ASKS(price);
    double price() ZP_ASKS();
};

struct BasketMethods : Basket {
    Basket *add(double price) {
        _prices.push_back(price);
        return this;
    }
    double price() {
        double sum = 0;
        for (double p : _prices) sum += p;
        return sum;
    }
    ZPString *description() {
        return ZPString::stringWithFormat("%d things for %.2f"_zp, int(_prices.size()), self()->price());
    }
};

ZP_IMPLEMENT_WITH(Basket, BasketMethods, adopts(Priced), add, price, description);

// A category: every string can shout.
struct Shouting : ZPString {
    ZPString *shout() { return uppercaseString()->stringByAppendingString("!"_zp); }
};
ZP_CATEGORY(ZPString, Shouting, shout);

int main() {
    ZPAutoreleasePoolScope pool;
    ZPRef<Basket> basket = ZPAdopt(Basket::new_());
    basket->add(1.5)->add(2.25);
    id anything = basket;
    bool right =
        anything->conformsToProtocol(Priced::protocol()) && objc_msgSend<double>(anything, "price"_sel) == 3.75;
    ZPArray *words = ZPArray::arrayWithObjects("one"_zp, "two"_zp, basket->description());
    try {
        words->objectAtIndex(3);
        right = false;
    } catch (ZPException *e) {
        right = right && std::string(e->reason()->cString()) ==
                             "*** -[ZPConcreteArray objectAtIndex:]: index (3) beyond bounds (3)";
    }
    ZPString *joined = words->componentsJoinedByString(", "_zp);
    std::cout << joined->cString() << " / " << objc_msgSend<ZPString *>(words->objectAtIndex(0), "shout"_sel)->cString()
              << "\n";
    id tree = "{a = (1, 2); b = <0a0b>;}"_zp->propertyList();
    right = right && tree->isKindOfClass(ZPDictionary::class_()) && joined->isEqual("one, two, 2 things for 3.75"_zp);
    return right ? 0 : 1;
}
