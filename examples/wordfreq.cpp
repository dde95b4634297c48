// SPDX-License-Identifier: MIT
// wordfreq: the most frequent words of a text file in any of the library's encodings.
#include <Bedrock/Bedrock.h>

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace {

int usage() {
    std::cerr << "usage: wordfreq [--top COUNT] [--encoding NUMBER] FILE\n"
                 "encodings:\n";
    for (const ZPStringEncoding *e = ZPString::availableStringEncodings(); *e; ++e)
        std::cerr << "  " << *e << "  " << ZPString::localizedNameOfStringEncoding(*e) << "\n";
    return 2;
}

ZPCountedSet *wordsOf(ZPString *text) {
    ZPCountedSet *words = ZPCountedSet::set();
    ZPCharacterSet *letters = ZPCharacterSet::letterCharacterSet();
    ZPScanner *scanner = ZPScanner::scannerWithString(text);
    scanner->setCharactersToBeSkipped(letters->invertedSet());
    while (true) {
        ZPAutoreleasePoolScope pool;  // a word or two, not the whole text
        ZPString *word;
        if (!scanner->scanCharactersFromSet_intoString(letters, &word)) return words;
        words->addObject(word->lowercaseString());
    }
}

/// The more frequent word first, equally frequent ones by text.
int byFrequency(id a, id b, void *context) {
    auto *words = static_cast<ZPCountedSet *>(context);
    unsigned countA = words->countForObject(a), countB = words->countForObject(b);
    if (countA != countB) return countA > countB ? -1 : 1;
    return static_cast<ZPString *>(a)->compare(b);
}

}  // namespace

int main(int argc, char **argv) {
    ZPAutoreleasePoolScope pool;
    unsigned top = 10;
    ZPStringEncoding encoding = ZPUTF8StringEncoding;
    ZPString *path = nullptr;
    for (int i = 1; i < argc; ++i) {
        std::string_view argument = argv[i];
        if (argument == "--top" && i + 1 < argc) top = unsigned(std::atoi(argv[++i]));
        else if (argument == "--encoding" && i + 1 < argc) encoding = unsigned(std::atoi(argv[++i]));
        else if (!path && !argument.starts_with('-')) path = ZPMakeString(argument);
        else return usage();
    }
    if (!path) return usage();

    ZPData *bytes = ZPData::dataWithContentsOfMappedFile(path);
    if (!bytes) return std::cerr << "wordfreq: " << path << " cannot be read\n", 1;
    ZPRef<ZPString> text = ZPAdopt(ZPString::alloc()->initWithData_encoding(bytes, encoding));
    if (!text)
        return std::cerr << "wordfreq: " << path << " is no " << ZPString::localizedNameOfStringEncoding(encoding)
                         << "\n",
               1;

    ZPCountedSet *words = wordsOf(text);
    ZPArray *sorted = words->allObjects()->sortedArrayUsingFunction_context(byFrequency, words);
    for (ZPString *word : sorted) {
        if (top-- == 0) break;
        std::cout << words->countForObject(word) << "\t" << word << "\n";
    }
}
