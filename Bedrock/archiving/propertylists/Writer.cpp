// SPDX-License-Identifier: MIT
// Writing property lists as text. The whole text is built in one buffer. An array or dictionary is written with
// a line for each element; when all of it fits in a line of 79 characters, the parts are put together again.
#include <Bedrock/archiving/grammar/Grammar.h>
#include <Bedrock/collections/Elements.h>
#include <Bedrock/collections/MergeSort.h>
#include <Bedrock/core/Fronts.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/data/DataView.h>
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/platform/kernel/MakeOnce.h>
#include <Bedrock/strings/cluster/Cluster.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr unsigned lineLength = 79;

// What a character below 128 needs in the text: nothing when it may stand in a bare string, `Quotes`, or an
// escape of two characters or of four.
enum : unsigned char { Bare, Slash, Quoted, Octal, Escape };
struct Classes {
    unsigned char of[128];
    char escape[128];
    constexpr Classes() : of(), escape() {
        for (unsigned c = 0; c < 128; ++c) {
            bool bare = _ZPIsLetter(c) || _ZPIsDigit(c) || c == '_' || c == '$' || c == '.';
            of[c] = bare ? Bare : c == '/' ? Slash : c >= 32 && c < 127 ? Quoted : Octal;
        }
        for (auto [c, e] : {std::pair('\n', 'n'),
                            {'\v', 'v'},
                            {'\f', 'f'},
                            {'\b', 'b'},
                            {'\t', 't'},
                            {'\a', 'a'},
                            {'"', '"'},
                            {'\\', '\\'}}) {
            of[static_cast<unsigned char>(c)] = Escape;
            escape[static_cast<unsigned char>(c)] = e;
        }
    }
};
constexpr Classes classes;

// Growing text: characters below 128 in bytes until one above them is put, units from then on.
class Text {
    char *_bytes = nullptr;
    unichar *_units = nullptr;
    std::size_t _length = 0, _capacity = 0;
    static constexpr const char *what = "a property list of %u characters";

    ZP_COLD void grow(std::size_t more) {
        std::size_t size = std::max<std::size_t>(256, std::max(_capacity * 2, _length + more));
        if (size > 0x7FFFFFFF) {
            size = _length + more;
            if (size > 0x7FFFFFFF) _ZPRaiseMalloc("a property list of more than %d characters", 0x7FFFFFFF);
        }
        if (_units) _units = _ZPReallocate(_units, size, nullptr, what, unsigned(size));
        else _bytes = _ZPReallocate(_bytes, size, nullptr, what, unsigned(size));
        _capacity = size;
    }
    ZP_COLD void widen() {
        unichar *units = _ZPAllocate<unichar>(_capacity, nullptr, what, unsigned(_capacity));
        std::copy_n(_bytes, _length, units);
        if (_bytes) ZPZoneFree(nullptr, _bytes);
        _bytes = nullptr;
        _units = units;
    }

  public:
    Text() = default;
    Text(const Text &) = delete;
    ~Text() {
        if (_bytes) ZPZoneFree(nullptr, _bytes);
        if (_units) ZPZoneFree(nullptr, _units);
    }
    std::size_t length() const { return _length; }
    void reserve(std::size_t more) {
        if (_capacity - _length < more) [[unlikely]]
            grow(more);
    }
    ZP_INLINE void put(const char *text, std::size_t count) {
        if (!count) return;
        reserve(count);
        if (_units) std::copy_n(text, count, _units + _length);
        else std::memcpy(_bytes + _length, text, count);
        _length += count;
    }
    template <unsigned N> ZP_INLINE void put(const char (&text)[N]) { put(text, N - 1); }
    ZP_INLINE void put(char c) {
        reserve(1);
        if (_units) _units[_length] = static_cast<unsigned char>(c);
        else _bytes[_length] = c;
        ++_length;
    }
    void spaces(std::size_t count) {
        if (!count) return;
        reserve(count);
        if (_units) std::fill_n(_units + _length, count, u' ');
        else std::memset(_bytes + _length, ' ', count);
        _length += count;
    }
    /// Bytes to fill directly, when the text is narrow; then `filled`.
    char *room(std::size_t most) {
        reserve(most);
        return _units ? nullptr : _bytes + _length;
    }
    void filled(char *end) { _length = std::size_t(end - _bytes); }

    /// Any string as it is.
    void put(ZPString *string) {
        ZPStringView view = _ZPViewOfString(string);
        reserve(view.length);
        if (!_units && view.bytes && _ZPIsASCII(view.bytes, view.length))
            return put(reinterpret_cast<const char *>(view.bytes), view.length);
        if (!_units) widen();
        if (view.shown()) _ZPCopyUnits(view, 0, view.length, _units + _length);
        else string->getCharacters_range(_units + _length, {0, view.length});
        _length += view.length;
    }

    struct Span {
        unsigned at, length;
    };
    /// Puts `open`, the pieces with `between` between them and `close` in the place of everything from `from` on;
    /// together they make one line.
    [[gnu::noinline]] void join(std::size_t from, char open, const Span *pieces, unsigned count, unsigned between,
                                char close) {
        unichar line[lineLength];
        unsigned length = 0;
        line[length++] = static_cast<unsigned char>(open);
        for (unsigned i = 0; i < count; ++i) {
            if (i && between) line[length++] = ',', line[length++] = ' ';
            if (_units) std::copy_n(_units + pieces[i].at, pieces[i].length, line + length);
            else std::copy_n(_bytes + pieces[i].at, pieces[i].length, line + length);
            length += pieces[i].length;
        }
        line[length++] = static_cast<unsigned char>(close);
        if (_units) std::copy_n(line, length, _units + from);
        else std::copy_n(line, length, _bytes + from);
        _length = from + length;
    }

    /// The text as a string, autoreleased; leaves nothing.
    ZPString *string() {
        unsigned count = unsigned(_length);
        if (!count) return ""_zp;
        ZPString *made;
        if (_units) {
            made = ZPString::alloc()->initWithCharactersNoCopy_length_freeWhenDone(std::exchange(_units, nullptr),
                                                                                   count, YES);
        } else if (count < 256) {
            made = _ZPNewInlineCString(_bytes, count, nullptr);
        } else {
            if (void *smaller = ZPZoneRealloc(nullptr, _bytes, count)) _bytes = static_cast<char *>(smaller);
            made = _ZPNewStringAdoptingBytes(std::exchange(_bytes, nullptr), count, YES, nullptr);
        }
        return made->autorelease();
    }
};

// ---- strings -------------------------------------------------------------------------------------

template <class U> bool isBare(U &&units, unsigned length) {
    bool slash = false;
    for (unsigned i = 0; i < length; ++i) {
        unsigned c = units[i];
        if (c >= 128) return false;
        unsigned cls = classes.of[c];
        if (cls > Slash || (cls == Slash && slash)) return false;
        slash = cls == Slash;
    }
    return length != 0;
}

char *putEscaped(char *at, unsigned c) {
    if (c < 128 && classes.of[c] <= Quoted) {
        *at++ = static_cast<char>(c);
        return at;
    }
    if (c < 128 && classes.of[c] == Escape) {
        *at++ = '\\';
        *at++ = classes.escape[c];
        return at;
    }
    unsigned char byte;
    // The paragraph separator has a byte, the line feed's, that does not come back as it.
    if (c != 0x2029 && ZPPrecompUnicodeToKESTREL(static_cast<unichar>(c), &byte)) return _ZPPutByteEscape(at, byte);
    return _ZPPutUnitEscape(at, c);
}

// Quoted text, a block of it at a time.
template <class U> void putQuoted(Text &text, U &&units, unsigned length) {
    text.put('"');
    for (unsigned i = 0; i < length;) {
        unsigned end = std::min(length, i + 64);
        if (char *at = text.room(6 * 64)) {
            while (i < end) at = putEscaped(at, units[i++]);
            text.filled(at);
        } else {
            char block[6 * 64], *last = block;
            while (i < end) last = putEscaped(last, units[i++]);
            text.put(block, std::size_t(last - block));
        }
    }
    text.put('"');
}
// 8-bit text: the runs between what needs an escape are copied whole.
void putQuoted(Text &text, const unsigned char *bytes, unsigned length) {
    text.put('"');
    for (unsigned i = 0; i < length;) {
        unsigned run = i;
        while (run < length && bytes[run] < 128 && classes.of[bytes[run]] <= Quoted) ++run;
        if (run > i) text.put(reinterpret_cast<const char *>(bytes + i), run - i);
        if ((i = run) == length) break;
        char block[8];
        text.put(block, std::size_t(putEscaped(block, _ZPUnitOfByte(bytes[i++])) - block));
    }
    text.put('"');
}
void putQuoted(Text &text, ZPString *string) {
    _ZPWithUnits(string, [&](auto &&units, unsigned length) { putQuoted(text, units, length); });
}
void putString(Text &text, ZPString *string) {
    ZPStringView view = _ZPViewOfString(string);
    if (view.bytes) {
        if (isBare(view.bytes, view.length)) return text.put(reinterpret_cast<const char *>(view.bytes), view.length);
        return putQuoted(text, view.bytes, view.length);
    }
    _ZPWithUnits(string, [&](auto &&units, unsigned length) {
        if (!isBare(units, length)) return putQuoted(text, units, length);
        for (unsigned i = 0; i < length; ++i) text.put(static_cast<char>(units[i]));
    });
}

// ---- trees ---------------------------------------------------------------------------------------

struct Writer {
    Text &text;
    ZPDictionary *locale;

    void element(id object, unsigned level) {
        Class cls = object.pointer()->isa;
        if (cls == ZPInlineCString::class_() || cls == ZPConstantString::class_() || cls == ZPUnicodeString::class_() ||
            cls == ZPCString::class_())
            return putString(text, object);
        unsigned count;
        ZPSimpleDictionary *table;
        if (id *items = _ZPItemsOfArray(object, count)) return array(items, count, level);
        if (_ZPTableOfDictionary(object, table)) return dictionary(object, level);
        if (ZPDataView view; _ZPViewOfOwnData(object, view)) return data(view);
        other(object, level);
    }
    // An object that describes itself.
    void other(id object, unsigned level) {
        if (object->isKindOfClass(ZPString::class_())) text.put(object.as<ZPString>()->_stringRepresentation());
        else if (object->respondsToSelector("descriptionWithLocale:indent:"_sel))
            text.put(object.unchecked<_ZPLocalizable>()->descriptionWithLocale_indent(locale, level));
        else if (object->respondsToSelector("descriptionWithLocale:"_sel))
            text.put(object.unchecked<_ZPLocalizable>()->descriptionWithLocale(locale));
        else text.put(object->description());
    }
    void data(ZPDataView view) {
        text.put('<');
        for (unsigned i = 0; i < view.length; ++i) {
            char pair[2];
            _ZPPutHexByte(pair, view.bytes[i]);
            text.put(pair, sizeof pair);
            if (i % 4 == 3) text.put(' ');
        }
        text.put('>');
    }
    void checkLevel(unsigned level) {
        if (level >= _ZPMaximumLevels)
            ZPException::raise_format(ZPInvalidArgumentException,
                                      "*** a property list nested more than %d levels deep"_zp, _ZPMaximumLevels);
    }

    // The pieces of what might become one line, while it is short enough. A piece of an array takes two
    // characters at least, one of a dictionary five.
    struct Pieces {
        Text::Span spans[lineLength / 2 + 1];
        unsigned count = 0, total = 2;
        void add(std::size_t from, std::size_t to, unsigned extra) {
            if (total > lineLength) return;
            std::size_t length = to - from;
            if (length > lineLength || (total += unsigned(length) + extra) > lineLength) total = lineLength + 1;
            else spans[count++] = {unsigned(from), unsigned(length)};
        }
        bool fit() const { return total <= lineLength; }
    };

    [[gnu::noinline]] void otherArray(ZPArray *array, unsigned level) {
        _ZPElements elements(array);
        this->array(elements.items, elements.count, level);
    }
    void array(const id *items, unsigned count, unsigned level) {
        checkLevel(level);
        if (!count) return text.put("()");
        std::size_t start = text.length();
        Pieces pieces;
        text.put("(\n");
        for (unsigned i = 0; i < count; ++i) {
            bool last = i + 1 == count;
            text.spaces(4 * (std::size_t(level) + 1));
            std::size_t from = text.length();
            element(items[i], level + 1);
            // The last piece may be empty and then counts nothing.
            pieces.add(from, text.length(), last ? 0 : 2);
            if (last) text.put('\n');
            else text.put(", \n");
        }
        if (pieces.fit()) return text.join(start, '(', pieces.spans, pieces.count, 2, ')');
        text.spaces(4 * std::size_t(level));
        text.put(')');
    }

    struct Entry {
        id key, value;
    };
    // Keys that are library strings in bytes below 128 compare as bytes do.
    static bool bytesBefore(const Entry &a, const Entry &b) {
        ZPStringView x = _ZPViewOfString(a.key), y = _ZPViewOfString(b.key);
        int order = std::memcmp(x.bytes, y.bytes, std::min(x.length, y.length));
        return order ? order < 0 : x.length < y.length;
    }
    static void sort(std::vector<Entry> &entries) {
        bool sortable = true, bytes = true;
        for (const Entry &entry : entries) {
            Class cls = entry.key.pointer()->isa;
            if (cls == ZPInlineCString::class_() || cls == ZPConstantString::class_()) {
                ZPStringView view = _ZPViewOfString(entry.key);
                bytes = bytes && view.length && _ZPIsASCII(view.bytes, view.length);
                continue;
            }
            bytes = false;
            sortable = sortable && entry.key->respondsToSelector("compare:"_sel);
        }
        if (!sortable) return;
        if (bytes) {
            std::sort(entries.begin(), entries.end(), bytesBefore);
            return;
        }
        // Not with the standard sort: a comparison of the client's need not be an order.
        std::size_t count = entries.size();
        std::vector<Entry> room(2 * count);
        Entry *sorted = _ZPMergeSorted(
            unsigned(count), entries.data(), room.data(), room.data() + count,
            [](const Entry &a, const Entry &b) -> int {
                return a.key.unchecked<ZPString>()->compare(b.key.unchecked<ZPString>());
            },
            count > 63);
        if (sorted != entries.data()) entries.assign(sorted, sorted + count);
    }

    void dictionary(ZPDictionary *dictionary, unsigned level) {
        std::vector<Entry> entries;
        entries.reserve(dictionary->count());
        _ZPForEachEntry(dictionary, [&](id key, id value) {
            if (value) entries.push_back({key, value});
            return true;
        });
        if (entries.empty()) return text.put("{}");
        checkLevel(level);
        sort(entries);
        std::size_t start = text.length();
        Pieces pieces;
        text.put("{\n");
        for (const Entry &entry : entries) {
            text.spaces(4 * (std::size_t(level) + 1));
            std::size_t from = text.length();
            element(entry.key, level + 1);
            text.put(" = ");
            element(entry.value, level + 1);
            text.put("; ");
            pieces.add(from, text.length(), 0);
            text.put('\n');
        }
        if (pieces.fit()) return text.join(start, '{', pieces.spans, pieces.count, 0, '}');
        text.spaces(4 * std::size_t(level));
        text.put('}');
    }
};

bool writeDescription(ZPString *description, ZPString *path, BOOL atomically) {
    unsigned length = description->length();
    if (!length || description->characterAtIndex(length - 1) != '\n')
        description = description->stringByAppendingString("\n"_zp);
    return description->writeToFile_atomically(path, atomically);
}

struct ArrayWriting : ZPArray {
    ZPString *description() { return self()->descriptionWithLocale_indent(nullptr, 0); }
    ZPString *descriptionWithLocale(ZPDictionary *locale) { return self()->descriptionWithLocale_indent(locale, 0); }
    ZPString *descriptionWithLocale_indent(ZPDictionary *locale, unsigned level) {
        Text text;
        Writer{text, locale}.otherArray(this, level);
        return text.string();
    }
    BOOL writeToFile_atomically(ZPString *path, BOOL atomically) {
        return writeDescription(self()->description(), path, atomically);
    }
};

struct DictionaryWriting : ZPDictionary {
    ZPString *description() { return self()->descriptionWithLocale_indent(nullptr, 0); }
    ZPString *descriptionWithLocale(ZPDictionary *locale) { return self()->descriptionWithLocale_indent(locale, 0); }
    ZPString *descriptionWithLocale_indent(ZPDictionary *locale, unsigned level) {
        Text text;
        Writer{text, locale}.dictionary(this, level);
        return text.string();
    }
    ZPString *descriptionInStringsFileFormat() {
        Text text;
        _ZPForEachEntry(this, [&](id key, id value) {
            text.put(key.as<ZPString>()->quotedStringRepresentation());
            text.put(" = ");
            text.put(value->isKindOfClass(ZPString::class_()) ? value.as<ZPString>()->quotedStringRepresentation()
                                                              : value->description());
            text.put(";\n");
            return true;
        });
        return text.string();
    }
    BOOL writeToFile_atomically(ZPString *path, BOOL atomically) {
        return writeDescription(self()->description(), path, atomically);
    }
};

struct StringWriting : ZPString {
    ZPString *_stringRepresentation() {
        bool bare = _ZPWithUnits(this, [](auto &&units, unsigned length) { return isBare(units, length); });
        if (bare) return self()->copy()->autorelease();
        return self()->quotedStringRepresentation();
    }
    ZPString *quotedStringRepresentation() {
        Text text;
        putQuoted(text, this);
        return text.string();
    }
};

}  // namespace

ZPString *_ZPIndentSpace(unsigned level) {
    if (level > _ZPMaximumLevels) level = _ZPMaximumLevels;
    static ZPString *made[_ZPMaximumLevels + 1];
    return ZPMakeOnce(made[level], [&] {
        Text text;
        text.spaces(4 * std::size_t(level));
        return text.string()->retain().as<ZPString>();
    });
}

unsigned _ZPIsPList(id object, BOOL deep) {
    auto kindOf = [](id o) -> unsigned {
        if (!o) return 0;
        Class cls = o.pointer()->isa;
        if (cls == ZPConstantString::class_() || cls == ZPInlineCString::class_() ||
            o->isKindOfClass(ZPString::class_()))
            return 1;
        if (o->isKindOfClass(ZPData::class_())) return 2;
        if (o->isKindOfClass(ZPArray::class_())) return 3;
        return o->isKindOfClass(ZPDictionary::class_()) ? 4 : 0;
    };
    unsigned kind = kindOf(object);
    if (!deep || kind < 3) return kind;
    struct Node {
        id object;
        unsigned kind, level;
    };
    std::vector<Node> rest = {{object, kind, 0}};
    while (!rest.empty()) {
        Node node = rest.back();
        rest.pop_back();
        if (node.level >= _ZPMaximumLevels) return 0;
        bool fine = true;
        auto visit = [&](id child) {
            unsigned childKind = kindOf(child);
            if (childKind >= 3) rest.push_back({child, childKind, node.level + 1});
            else if (!childKind) fine = false;
        };
        if (node.kind == 3) {
            _ZPElements elements(node.object);
            for (id element : elements) visit(element);
        } else {
            _ZPForEachEntry(node.object, [&](id key, id value) {
                visit(key);
                visit(value);
                return fine;
            });
        }
        if (!fine) return 0;
    }
    return kind;
}

ZP_CATEGORY(ZPArray, ArrayWriting, description, descriptionWithLocale, descriptionWithLocale_indent,
            writeToFile_atomically);

ZP_CATEGORY(ZPDictionary, DictionaryWriting, description, descriptionWithLocale, descriptionWithLocale_indent,
            descriptionInStringsFileFormat, writeToFile_atomically);

ZP_CATEGORY(ZPString, StringWriting, _stringRepresentation, quotedStringRepresentation);
