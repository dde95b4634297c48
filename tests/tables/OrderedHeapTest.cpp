// SPDX-License-Identifier: MIT
// Heaps, held against sorted lists.
#include <support/Objects.h>

#include <stdexcept>

namespace {

struct Heap {
    ZPOrderedHeap *heap;
    explicit Heap(ZPHeapComparison order = nullptr, unsigned capacity = 0)
        : heap(ZPCreateOrderedHeap(order, capacity)) {}
    Heap(std::initializer_list<ZPHeapElement> elements) : Heap() {
        ZPAddMultipleToOrderedHeap(heap, std::data(elements), unsigned(elements.size()));
    }
    ~Heap() { ZPFreeOrderedHeap(heap); }
    operator ZPOrderedHeap *() { return heap; }
};

int byLastDigit(ZPOrderedHeap *, ZPHeapElement a, ZPHeapElement b) { return int(b % 10 - a % 10); }

}  // namespace

TEST(OrderedHeap, KeepsItsStorageInItsZone) {
    TestZone zone;
    ZPOrderedHeap *heap = ZPCreateOrderedHeapFromZone(nullptr, 5, zone);
    std::vector<ZPHeapElement> many(9, 4);
    ZPAddMultipleToOrderedHeap(heap, many.data(), 9);
    EXPECT_EQ(ZPZoneFromPointer(heap->storage), zone.zone);
    ZPFreeOrderedHeap(heap);
}

TEST(OrderedHeap, OrdersIntegersByTheirWrappedDifference) {
    Heap first{0x7FFFFFFF, -1}, wrapped{-2, 0x7FFFFFFF};
    EXPECT_EQ(ZPMinimumOfOrderedHeap(first), 0x7FFFFFFF);
    EXPECT_EQ(ZPMinimumOfOrderedHeap(wrapped), 0x7FFFFFFF);
    int locals[2];
    auto low = reinterpret_cast<ZPHeapElement>(&locals[0]), high = reinterpret_cast<ZPHeapElement>(&locals[1]);
    Heap pointers{high, low, high + (ZPHeapElement(1) << 33)};
    EXPECT_EQ(ZPRemoveMinimumOfOrderedHeap(pointers), low) << "words of full width";
    EXPECT_EQ(ZPRemoveMinimumOfOrderedHeap(pointers), high);
}

TEST(OrderedHeap, FindsTheLeastThatIsNotBefore) {
    Heap zero{0};
    EXPECT_EQ(ZPRemoveLeastGreaterOfOrderedHeap(zero, -5), 0);
    EXPECT_EQ(ZPCountOrderedHeap(zero), 1u);
    Heap own(byLastDigit);
    for (ZPHeapElement n : {11, 29, 35}) ZPAddToOrderedHeap(own, n);
    EXPECT_EQ(ZPRemoveLeastGreaterOfOrderedHeap(own, 7), 35) << "9 orders before 7";
    EXPECT_EQ(ZPRemoveMinimumOfOrderedHeap(own), 29);
}

TEST(OrderedHeap, DoesWhatASortedListDoes) {
    std::mt19937 random(7);
    for (ZPHeapComparison order :
         {ZPHeapComparison(nullptr),
          ZPHeapComparison([](ZPOrderedHeap *, ZPHeapElement a, ZPHeapElement b) { return int(b - a); })}) {
        auto before = [&](ZPHeapElement a, ZPHeapElement b) { return order ? a > b : a < b; };
        Heap heap(order);
        std::vector<ZPHeapElement> model;
        for (int step = 0; step < 20000; ++step) {
            ZPHeapElement value = ZPHeapElement(random() % 500) + 1, got = 0;
            auto found = model.end();
            switch (random() % 6) {
            case 0:
            case 1:
            case 2:
                ZPAddToOrderedHeap(heap, value);
                model.insert(std::upper_bound(model.begin(), model.end(), value, before), value);
                continue;
            case 3:
                got = ZPRemoveMinimumOfOrderedHeap(heap);
                found = model.begin();
                break;
            case 4:
                got = ZPRemoveLeastGreaterOfOrderedHeap(heap, value);
                found = std::lower_bound(model.begin(), model.end(), value, before);
                break;
            default:
                if (random() % 8) continue;
                got = ZPRemoveRandomInOrderedHeap(heap);
                found = std::find(model.begin(), model.end(), got);
                ASSERT_EQ(found == model.end(), got == 0);
            }
            ASSERT_EQ(got, found == model.end() ? 0 : *found);
            if (found != model.end()) model.erase(found);
            ASSERT_EQ(ZPCountOrderedHeap(heap), model.size());
        }
        std::vector<ZPHeapElement> rest(model.size() + 2, 9);
        model.resize(rest.size());  // null where nothing is left
        ZPRemoveMultipleFromOrderedHeap(heap, rest.data(), unsigned(rest.size()));
        EXPECT_EQ(rest, model);
        EXPECT_EQ(ZPMinimumOfOrderedHeap(heap), 0);
    }
}

TEST(OrderedHeap, StaysWholeWhenAComparisonThrows) {
    static int left;
    Heap heap([](ZPOrderedHeap *, ZPHeapElement a,
                 ZPHeapElement b) { return --left == 0 ? throw std::runtime_error("no") : int(a - b); },
              0);
    left = 1000;
    for (ZPHeapElement n = 40; n; --n) ZPAddToOrderedHeap(heap, n);
    left = 3;
    EXPECT_THROW(ZPAddToOrderedHeap(heap, -1), std::runtime_error);
    std::vector<ZPHeapElement> all(heap.heap->storage, heap.heap->storage + ZPCountOrderedHeap(heap)), wanted{-1};
    for (ZPHeapElement n = 1; n <= 40; ++n) wanted.push_back(n);
    std::sort(all.begin(), all.end());
    EXPECT_EQ(all, wanted);
}
