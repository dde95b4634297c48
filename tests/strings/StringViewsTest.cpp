// SPDX-License-Identifier: MIT
// Texts that are looked at while clients' objects do what they like to them: retain a part, which then lets its parent
// go, or change a text that may change.
#include <support/Objects.h>

namespace {

std::function<void()> meanwhile;
void happen() {
    if (meanwhile) meanwhile();
}

/// Does something when it is described.
struct Describer : ZPObject {
    ZP_CLASS(Describer)
    ZPString *description() {
        happen();
        return "<it>"_zp;
    }
};
ZP_IMPLEMENT(Describer, description);

/// Blanks, which does something when it is asked.
struct Blanks : ZPCharacterSet {
    ZP_CLASS(Blanks)
    BOOL characterIsMember(unichar u) {
        happen();
        return u == ' ';
    }
};
ZP_IMPLEMENT(Blanks, characterIsMember);

/// A string of the primitives alone, which does something when it is asked.
struct Asked : ZPString {
    ZP_CLASS(Asked)
    std::u16string _text;
    unsigned length() {
        happen();
        return unsigned(_text.size());
    }
    unichar characterAtIndex(unsigned index) {
        happen();
        return _text.at(index);
    }
};
ZP_IMPLEMENT(Asked, length, characterAtIndex);

/// Bytes that are shown, and nothing else beside the primitives.
struct Shown : ZPString {
    ZP_CLASS(Shown)
    std::string _text;
    unsigned length() { return unsigned(_text.size()); }
    unichar characterAtIndex(unsigned index) { return static_cast<unsigned char>(_text.at(index)); }
    const char *_fastCStringContents() { return _text.c_str(); }
};
ZP_IMPLEMENT(Shown, length, characterAtIndex, _fastCStringContents);

std::string plain(id string) { return ZPStdString(string.unchecked<ZPString>()); }

// What is asked of a part of a text while a client's object retains it: the answer as text.
struct Operation {
    const char *name;
    std::function<std::string(ZPString *)> run;
};

ZPRef<Asked> asked(const char16_t *text) {
    ZPRef<Asked> string = ZPAdopt(Asked::new_());
    string->_text = text;
    return string;
}

constexpr char16_t shownText[] = u"%@ 12 %@ and the rest, which is long";
ZPRef<ZPCharacterSet> blanks() { return ZPAdopt(Blanks::new_()); }

const Operation operations[] = {
    {"components", [](ZPString *s) { return plain(s->_componentsSeparatedBySet(blanks())->description()); }},
    {"character", [](ZPString *s) { return std::to_string(s->rangeOfCharacterFromSet(blanks()).location); }},
    {"scanner",
     [](ZPString *s) {
         ZPScanner *scanner = ZPScanner::scannerWithString(s);
         ZPString *word = nullptr;
         int number = 0;
         scanner->setCharactersToBeSkipped(blanks());
         scanner->scanUpToCharactersFromSet_intoString(blanks(), &word);
         scanner->scanInt(&number);
         return plain(word) + std::to_string(number);
     }},
    {"format",
     [](ZPString *s) {
         ZPRef<Describer> it = ZPAdopt(Describer::new_());
         return plain(ZPString::stringWithFormat(s, it.get(), it.get()));
     }},
    {"compare", [](ZPString *s) { return std::to_string(int(s->compare(asked(shownText)))); }},
    {"equality", [](ZPString *s) { return std::to_string(s->isEqualToString(asked(shownText))); }},
    {"search", [](ZPString *s) { return std::to_string(s->rangeOfString(asked(u"rest")).location); }},
    {"prefix",
     [](ZPString *s) {
         return plain(s->commonPrefixWithString_options(asked(u"%@ 12 %@ AND"), ZPCaseInsensitiveSearch));
     }},
    {"appending", [](ZPString *s) { return plain(s->stringByAppendingString(asked(u" é"))); }},
};

}  // namespace

TEST(StringViews, APartIsRetainedWhileItIsRead) {
    constexpr std::u16string_view wanted = shownText;
    for (char16_t frame : {u'-', u'日'})
        for (auto &[name, run] : operations) {
            SCOPED_TRACE(name);
            std::u16string outer = std::u16string(60, frame) + std::u16string(wanted) + std::u16string(60, frame);
            std::string answers[2];
            for (bool retained : {false, true}) {
                auto *parent = ZPString::alloc()->initWithCharacters_length(outer.data(), unsigned(outer.size()));
                ZPString *part = parent->substringWithRange({60, unsigned(wanted.size())});
                parent->release();  // the part alone keeps it
                if (retained)
                    meanwhile = [=] {
                        part->retain();
                        part->release();
                    };
                answers[retained] = run(part);
                meanwhile = nullptr;
            }
            EXPECT_EQ(answers[0], answers[1]);
            EXPECT_NE(answers[0], "");
        }
}

TEST(StringViews, ATextChangesWhileItIsRead) {
    for (auto &[name, run] : operations) {
        SCOPED_TRACE(name);
        std::string still = run("%@ 12 %@ and the rest, which is long"_zp);
        ZPMutableString *text = ZPMutableString::string();
        text->setString("%@ 12 %@ and the rest, which is long"_zp);
        meanwhile = [=] {
            text->setString(""_zp);
            text->appendString("x"_zp);
        };
        // What has asked for the length before is told that there is no such range.
        try {
            EXPECT_EQ(run(text), still);
        } catch (ZPException *e) {
            EXPECT_TRUE(e->name()->isEqual(ZPRangeException)) << plain(e->reason());
        }
        meanwhile = nullptr;
    }
    // What is put in empties what it is put into.
    for (int how = 0; how < 3; ++how) {
        ZPMutableString *text = ZPMutableString::string();
        text->setString("0123456789"_zp);
        meanwhile = [=] { text->setString(""_zp); };
        try {
            if (how == 0) text->appendString(asked(u"added"));
            if (how == 1) text->insertString_atIndex(asked(u"added"), 8);
            if (how == 2) text->replaceCharactersInRange_withString({2, 5}, asked(u"added"));
        } catch (ZPException *e) {
            EXPECT_TRUE(e->name()->isEqual(ZPRangeException)) << plain(e->reason());
        }
        meanwhile = nullptr;
        EXPECT_TRUE(plain(text) == "" || plain(text) == "added") << plain(text);
    }
}

TEST(StringViews, OneFastContentsIsEnough) {
    ZPRef<Shown> shown = ZPAdopt(Shown::new_());
    shown->_text = "shown bytes";
    EXPECT_TRUE(shown->isEqualToString("shown bytes"_zp));
    EXPECT_EQ(shown->cStringLength(), 11u);
    EXPECT_EQ(shown->hash(), "shown bytes"_zp->hash());
    EXPECT_EQ(shown->rangeOfString("bytes"_zp).location, 6u);
    EXPECT_EQ(plain(shown->uppercaseString()), "SHOWN BYTES");
}

TEST(StringViews, OneThreadReadsThePartThatAnotherRetains) {
    std::thread([] {}).join();
    for (int round = 0; round < 300; ++round) {
        ZPAutoreleasePoolScope pool;
        std::string outer(200, char('a' + round % 26));
        auto *parent = ZPString::alloc()->initWithCString(outer.c_str());
        ZPString *part = parent->substringWithRange({50, 100});
        parent->release();
        std::thread other([=] {
            ZPAutoreleasePoolScope inner;
            part->retain();
            part->release();
        });
        const char *bytes = part->_fastCStringContents();
        unsigned sum = part->hash();
        for (unsigned i = 0; i < 100; ++i) sum += unsigned(part->characterAtIndex(i)) + unsigned(bytes[i]);
        other.join();
        EXPECT_EQ(sum - part->hash(), 200u * unsigned('a' + round % 26));
        EXPECT_EQ(std::string(bytes, 100), outer.substr(0, 100));
    }
}
