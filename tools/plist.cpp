// SPDX-License-Identifier: MIT
// plist: prints, checks and queries property lists.
#include <Bedrock/Bedrock.h>
#include "output.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace {

constexpr int usageStatus = 120, mostStatus = 100;

const char usage[] =
    "usage: plist [OPTION...] COMMAND\n"
    "       plist print FILE             write the property list in its text form\n"
    "       plist lint FILE...           check files; say nothing of good ones\n"
    "       plist get FILE KEYPATH       write the value at a path of keys and indexes: a.b.0\n"
    "       plist strings FILE           read a strings file and write it as one\n"
    "\n"
    "       --encoding ENCODING          what the files are written in\n"
    "       --output-encoding ENCODING   what results are written in, instead of UTF-8\n"
    "       --ascii                      write other characters than ASCII as escapes, not as they are\n"
    "       --list-encodings             write the number and the name of every encoding\n"
    "\n"
    "FILE may be - for standard input. ENCODING is a number or a name of the list, of which case, blanks and\n"
    "punctuation do not matter. Without --encoding, text is UTF-16 when it begins with a byte-order mark, else\n"
    "UTF-8, else 8-bit text. The exit status is 0, or the number of the first file that failed (at most 100),\n"
    "or 120 for a wrong call.\n";

/// The encodings of the options; input is guessed from the bytes unless one is given.
bool encodingIsGiven;
ZPStringEncoding inputEncoding, outputEncoding = ZPUTF8StringEncoding;
bool asciiOnly;

std::string plainName(std::string_view name) {
    std::string plain;
    for (char c : name)
        if (std::isalnum(static_cast<unsigned char>(c))) plain += char(std::tolower(static_cast<unsigned char>(c)));
    return plain;
}

std::string nameOf(ZPStringEncoding encoding) { return ZPStdString(ZPString::localizedNameOfStringEncoding(encoding)); }

/// The encoding of a number or a name; 0 when there is none.
ZPStringEncoding encodingNamed(std::string_view name) {
    for (const ZPStringEncoding *e = ZPString::availableStringEncodings(); *e; ++e)
        if (name == std::to_string(*e) || (!plainName(name).empty() && plainName(name) == plainName(nameOf(*e))))
            return *e;
    return 0;
}

int listEncodings() {
    for (const ZPStringEncoding *e = ZPString::availableStringEncodings(); *e; ++e)
        std::printf("%2u  %s\n", *e, nameOf(*e).c_str());
    return 0;
}

/// Writes a complaint; of a long one (an error deep inside a tree names every level) the ends.
void complain(const char *file, std::string what) {
    if (what.size() > 2000) what.replace(1000, what.size() - 1500, "\n...\n");
    std::fprintf(stderr, "plist: %s: %s\n", file, what.c_str());
}

ZPData *readStandardInput() {
    ZPMutableData *data = ZPMutableData::data();
    char buffer[65536];
    while (std::size_t n = std::fread(buffer, 1, sizeof buffer, stdin)) data->appendBytes_length(buffer, unsigned(n));
    return std::ferror(stdin) ? nullptr : data;
}

/// The text of a file, or null after a complaint.
ZPString *readText(const char *file) {
    errno = 0;
    ZPData *data =
        std::strcmp(file, "-") == 0 ? readStandardInput() : ZPData::dataWithContentsOfFile(ZPMakeString(file));
    if (!data) {
        complain(file, errno == EACCES ? "not a readable regular file" : std::strerror(errno ? errno : EIO));
        return nullptr;
    }
    if (encodingIsGiven) {
        if (ZPString *text = ZPString::alloc()->initWithData_encoding(data, inputEncoding)) return text->autorelease();
        complain(file, "the bytes are not text in " + nameOf(inputEncoding));
        return nullptr;
    }
    auto *bytes = static_cast<const unsigned char *>(data->bytes());
    unsigned length = data->length();
    bool marked = length >= 2 && ((bytes[0] == 0xFE && bytes[1] == 0xFF) || (bytes[0] == 0xFF && bytes[1] == 0xFE));
    if (marked && length % 2) {
        complain(file, "UTF-16 text with an odd number of bytes");
        return nullptr;
    }
    if (!marked && length >= 3 && std::memcmp(bytes, "\xEF\xBB\xBF", 3) == 0)
        data = data->subdataWithRange({3, length - 3});
    for (ZPStringEncoding encoding :
         {marked ? ZPUnicodeStringEncoding : ZPUTF8StringEncoding, ZPKESTRELStringEncoding}) {
        ZPString *text = ZPString::alloc()->initWithData_encoding(data, encoding);
        if (text) return text->autorelease();
    }
    complain(file, "the bytes are not text");
    return nullptr;
}

enum class Dialect { propertyList, strings };

/// The tree in a file, or null after a complaint.
id readTree(const char *file, Dialect dialect) {
    ZPString *text = readText(file);
    if (!text) return nullptr;
    try {
        return dialect == Dialect::strings ? id(text->propertyListFromStringsFileFormat()) : id(text->propertyList());
    } catch (ZPException *e) {
        ZPString *words = e->userInfo() ? e->userInfo()->objectForKey(ZPParseErrorExplanationKey) : id();
        complain(file, ZPStdString(words ? words : e->reason()));
        return nullptr;
    }
}

/// Whether a person can read a character that the text has an escape for, and a property list keep it.
bool isShown(unsigned c) { return c >= 0xA0 && c != 0xAD && (c < 0x2028 || c > 0x202E) && c != 0xFEFF && c < 0xFFFE; }

/// The text of a property list with the characters that its escapes stand for.
ZPString *shown(ZPString *text) {
    std::u16string out, in(text->length(), u'\0');
    text->getCharacters(reinterpret_cast<unichar *>(in.data()));
    bool inQuotes = false;
    for (std::size_t i = 0; i < in.size(); ++i) {
        if (in[i] == '"') inQuotes = !inQuotes;
        out += in[i];
        if (in[i] != '\\' || !inQuotes || i + 1 == in.size()) continue;
        // \Uxxxx, \ooo, or one character.
        bool isUnit = in[i + 1] == 'U';
        std::size_t digits = isUnit ? 4 : 3, from = i + 1 + isUnit;
        char *end = nullptr;
        std::string number(in.begin() + long(from), in.begin() + long(std::min(from + digits, in.size())));
        unsigned c = unsigned(std::strtoul(number.c_str(), &end, isUnit ? 16 : 8));
        if (number.size() != digits || *end) {
            out += in[++i];
            continue;
        }
        if (!isUnit && c >= 0x80) {
            char byte = char(c);
            ZPString *one = ZPString::alloc()->initWithData_encoding(ZPData::dataWithBytes_length(&byte, 1),
                                                                     ZPKESTRELStringEncoding);
            c = one ? one->characterAtIndex(0) : 0;
            one->release();
        }
        bool isSurrogate = c >= 0xD800 && c < 0xE000;
        if (!isSurrogate && !isShown(c)) continue;
        // The halves of a pair are escapes side by side.
        if (isSurrogate && (c >= 0xDC00 ? out.size() < 2 || (out[out.size() - 2] & 0xFC00) != 0xD800
                                        : std::u16string_view(in).substr(from + 4, 3) != u"\\Ud"))
            continue;
        out.back() = char16_t(c);
        i = from + digits - 1;
    }
    return ZPString::stringWithCharacters_length(reinterpret_cast<unichar *>(out.data()), unsigned(out.size()));
}

enum class Form { propertyList, plain };

bool write(const char *file, ZPString *text, Form form) {
    auto encoded = [](ZPString *t) {
        ZPData *data = t->stringByAppendingString("\n"_zp)->dataUsingEncoding(outputEncoding);
        return data ? data : t->dataUsingEncoding(outputEncoding);  // Symbol has no line feed
    };
    if (text->hasSuffix("\n"_zp)) text = text->substringToIndex(text->length() - 1);
    ZPData *data = form == Form::plain || asciiOnly ? nullptr : encoded(shown(text));
    if (!data) data = encoded(text);  // the encoding has not all that is shown, so escapes stay
    if (!data) {
        complain(file, nameOf(outputEncoding) + " does not have all of its characters");
        return false;
    }
    return std::fwrite(data->bytes(), 1, data->length(), stdout) == data->length();
}

int print(const char *file) {
    id tree = readTree(file, Dialect::propertyList);
    if (!tree) return 1;
    bool isString = tree->isKindOfClass(ZPString::class_());
    ZPString *text = isString ? static_cast<ZPString *>(tree)->quotedStringRepresentation() : tree->description();
    return write(file, text, Form::propertyList) ? 0 : 1;
}

int lint(int count, char **files) {
    int status = 0;
    for (int i = 0; i < count; ++i) {
        ZPAutoreleasePoolScope pool;
        if (!readTree(files[i], Dialect::propertyList) && status == 0) status = i + 1 < mostStatus ? i + 1 : mostStatus;
    }
    return status;
}

int get(const char *file, const char *path) {
    id at = readTree(file, Dialect::propertyList);
    if (!at) return 1;
    for (ZPString *step : ZPMakeString(path)->componentsSeparatedByString("."_zp)) {
        id next;
        if (at->isKindOfClass(ZPDictionary::class_())) {
            next = static_cast<ZPDictionary *>(at)->objectForKey(step);
        } else if (at->isKindOfClass(ZPArray::class_())) {
            ZPArray *array = at;
            int index = step->intValue();
            if (index >= 0 && unsigned(index) < array->count()) next = array->objectAtIndex(unsigned(index));
        }
        if (!next) {
            complain(file, "no value at " + std::string(path) + " (" + ZPStdString(step) + ")");
            return 1;
        }
        at = next;
    }
    Form form = at->isKindOfClass(ZPString::class_()) ? Form::plain : Form::propertyList;
    return write(file, at->description(), form) ? 0 : 1;
}

int strings(const char *file) {
    id tree = readTree(file, Dialect::strings);
    return tree && write(file, static_cast<ZPDictionary *>(tree)->descriptionInStringsFileFormat(), Form::propertyList)
               ? 0
               : 1;
}

}  // namespace

static int run(int argc, char **argv) {
    ZPAutoreleasePoolScope pool;
    for (; argc > 1 && std::strncmp(argv[1], "--", 2) == 0; --argc, ++argv) {
        std::string_view option = argv[1];
        if (option == "--list-encodings" && argc == 2) return listEncodings();
        if (option == "--ascii") {
            asciiOnly = true;
            continue;
        }
        ZPStringEncoding encoding = 0;
        if ((option == "--encoding" || option == "--output-encoding") && argc > 2) {
            encoding = encodingNamed(argv[2]);
            if (!encoding) std::fprintf(stderr, "plist: no encoding %s (--list-encodings shows them)\n", argv[2]);
        } else if (option == "--help") break;
        else std::fputs(usage, stderr);
        if (!encoding) return usageStatus;
        if (option == "--encoding") encodingIsGiven = true;
        (option == "--encoding" ? inputEncoding : outputEncoding) = encoding;
        --argc;
        ++argv;
    }
    std::string_view command = argc > 1 ? argv[1] : "";
    if (command == "print" && argc == 3) return print(argv[2]);
    if (command == "lint" && argc >= 3) return lint(argc - 2, argv + 2);
    if (command == "get" && argc == 4) return get(argv[2], argv[3]);
    if (command == "strings" && argc == 3) return strings(argv[2]);
    std::fputs(usage, command == "help" || command == "--help" ? stdout : stderr);
    return command == "help" || command == "--help" ? 0 : usageStatus;
}

int main(int argc, char **argv) { return finishOutput("plist", run(argc, argv)); }
