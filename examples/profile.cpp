// SPDX-License-Identifier: MIT
// profile: which messages an object gets, how often, and how long they take.
//
// A Profiler stands in for any object. The code that uses the object does not know: here an index of the words of a
// text is built in a profiled dictionary. The report goes to standard error with times, and without them to standard
// output.
#include <Bedrock/Bedrock.h>

#include <chrono>
#include <iostream>
#include <map>
#include <string>

struct Profiler : ZPProxy {
    ZP_CLASS(Profiler)
    struct Record {
        unsigned count = 0;
        std::chrono::nanoseconds time{};
    };
    ZPRef<ZPObject> _target;
    std::map<std::string, Record> _records;

    static Profiler *profilerWithTarget(id target) {
        ZPRef<Profiler> profiler = ZPAdopt(Profiler::alloc());
        profiler->_target = target;
        return std::move(profiler).autoreleased();
    }
    /// What to give to the code that is to be watched.
    template <class T> T *standIn() { return reinterpret_cast<T *>(this); }

    void forward(SEL selector, objc_frame *frame) {
        auto start = std::chrono::steady_clock::now();
        objc_sendFrame(_target, selector, frame->length, frame->arguments, frame->result, frame->resultSize);
        Record &record = _records[sel_getName(selector)];
        ++record.count;
        record.time += std::chrono::steady_clock::now() - start;
    }
};
ZP_IMPLEMENT(Profiler, named(forward, "forward::"));

/// Every word of the text with the numbers of the lines that hold it.
static void buildIndex(ZPString *text, ZPMutableDictionary *index) {
    unsigned number = 0;
    for (ZPString *line : text->componentsSeparatedByString("\n"_zp)) {
        ++number;
        for (ZPString *word :
             line->lowercaseString()->_componentsSeparatedBySet(ZPCharacterSet::letterCharacterSet()->invertedSet())) {
            ZPMutableArray *lines = index->objectForKey(word);
            if (!lines) index->setObject_forKey(lines = ZPMutableArray::array(), word);
            ZPString *entry = ZPString::stringWithFormat("%u"_zp, number);
            if (!lines->containsObject(entry)) lines->addObject(entry);
        }
    }
}

int main(int argc, char **argv) {
    ZPAutoreleasePoolScope pool;
    if (argc != 2) return std::cerr << "usage: profile FILE\n", 2;
    ZPData *bytes = ZPData::dataWithContentsOfFile(ZPMakeString(argv[1]));
    ZPRef<ZPString> text =
        bytes ? ZPAdopt(ZPString::alloc()->initWithData_encoding(bytes, ZPUTF8StringEncoding)) : nullptr;
    if (!text) return std::cerr << "profile: " << argv[1] << " cannot be read\n", 1;

    ZPMutableDictionary *index = ZPMutableDictionary::dictionary();
    Profiler *profiler = Profiler::profilerWithTarget(index);
    buildIndex(text, profiler->standIn<ZPMutableDictionary>());

    for (ZPString *word : index->allKeys()->sortedArrayUsingSelector("compare:"_sel)) {
        ZPArray *lines = index->objectForKey(word);
        if (lines->count() > 1) std::cout << word << ": " << lines->componentsJoinedByString(", "_zp) << "\n";
    }
    for (auto &[selector, record] : profiler->_records) {
        std::cout << record.count << " x " << selector << "\n";
        std::cerr << selector << " took " << record.time.count() / record.count << " ns\n";
    }
}
