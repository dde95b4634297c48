// plist: prints, checks and queries property lists.
#include <Bedrock/Bedrock.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace {

constexpr int usageStatus = 120, mostStatus = 100;

const char usage[] =
    "usage: plist print FILE             write the property list in its text form\n"
    "       plist lint FILE...           check files; say nothing of good ones\n"
    "       plist get FILE KEYPATH       write the value at a path of keys and indexes: a.b.0\n"
    "       plist strings FILE           read a strings file and write it as one\n"
    "\n"
    "FILE may be - for standard input. Text is UTF-16 when it begins with a byte-order mark, else UTF-8,\n"
    "else 8-bit text. The exit status is 0, or the number of the first file that failed (at most 100),\n"
    "or 120 for a wrong call.\n";

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
    ZPData *data = std::strcmp(file, "-") == 0 ? readStandardInput() : ZPData::dataWithContentsOfFile(ZPMakeString(file));
    if (!data) {
        complain(file, errno == EACCES ? "not a readable regular file" : std::strerror(errno ? errno : EIO));
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
    for (ZPStringEncoding encoding : {marked ? ZPUnicodeStringEncoding : ZPUTF8StringEncoding, ZPKESTRELStringEncoding}) {
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
        complain(file, ZPStdString(e->reason()));
        return nullptr;
    }
}

bool write(ZPString *text) {
    std::string bytes = ZPStdString(text);
    if (bytes.empty() || bytes.back() != '\n') bytes += '\n';
    return std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size();
}

int print(const char *file) {
    id tree = readTree(file, Dialect::propertyList);
    if (!tree) return 1;
    bool isString = tree->isKindOfClass(ZPString::class_());
    return write(isString ? static_cast<ZPString *>(tree)->quotedStringRepresentation() : tree->description()) ? 0 : 1;
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
    return write(at->description()) ? 0 : 1;
}

int strings(const char *file) {
    id tree = readTree(file, Dialect::strings);
    return tree && write(static_cast<ZPDictionary *>(tree)->descriptionInStringsFileFormat()) ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
    ZPAutoreleasePoolScope pool;
    std::string_view command = argc > 1 ? argv[1] : "";
    if (command == "print" && argc == 3) return print(argv[2]);
    if (command == "lint" && argc >= 3) return lint(argc - 2, argv + 2);
    if (command == "get" && argc == 4) return get(argv[2], argv[3]);
    if (command == "strings" && argc == 3) return strings(argv[2]);
    std::fputs(usage, command == "help" || command == "--help" ? stdout : stderr);
    return command == "help" || command == "--help" ? 0 : usageStatus;
}
