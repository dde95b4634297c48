// SPDX-License-Identifier: MIT
// The direct reader of property-list text: the common case of the parser, without its tables. It gives the
// very tree that the parser gives, equal strings being one object, or gives up on the first thing it does not
// like; the parser then reads the text again and says what is wrong.
#include <Bedrock/archiving/propertylists/Reader+Internal.h>
#include <Bedrock/archiving/grammar/Escapes.h>
#include <Bedrock/collections/Elements.h>
#include <Bedrock/collections/Makers.h>
#include <Bedrock/data/ZPData.h>
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/platform/objects/Slabs.h>
#include <Bedrock/strings/cluster/Keys.h>

#include <cstring>
#include <memory>

namespace {

enum : unsigned char { Unquoted = 1, Blank = 2, Plain = 4 };
struct Classes {
    unsigned char of[256];
    constexpr Classes() : of() {
        for (unsigned c = 0; c < 256; ++c) {
            if (_ZPIsLetter(c) || _ZPIsDigit(c) || c == '_' || c == '$' || c == '/' || c == ':' || c == '.')
                of[c] |= Unquoted;
            if ((c >= 9 && c <= 13) || c == ' ') of[c] |= Blank;
            if (c && c < 128 && c != '"' && c != '\\') of[c] |= Plain;  // as it is in quotes
        }
    }
};
constexpr Classes classes;
ZP_INLINE bool is(unsigned c, unsigned char cls) { return c < 256 && classes.of[c] & cls; }

// Values of hexadecimal digits; 16 and more for other characters.
struct HexDigits {
    unsigned char of[256];
    constexpr HexDigits() : of() {
        for (unsigned c = 0; c < 256; ++c) of[c] = static_cast<unsigned char>(_ZPHexValue(c));
    }
};
constexpr HexDigits hexDigits;
ZP_INLINE unsigned hexDigit(unsigned c) { return c < 256 ? hexDigits.of[c] : 0xFF; }

// The end of the characters that stand for themselves in quotes; eight bytes at a time.
inline const unsigned char *plainEnd(const unsigned char *p, const unsigned char *end) {
    constexpr std::uint64_t ones = 0x0101010101010101, high = 0x8080808080808080;
    for (; end - p >= 8; p += 8) {
        std::uint64_t word;
        std::memcpy(&word, p, 8);
        std::uint64_t quotes = word ^ ones * '"', backslashes = word ^ ones * '\\';
        // A byte that is zero in one of the words, or above 127, sets its high bit (or that of a later byte).
        if (((quotes - ones) | (backslashes - ones) | (word - ones) | word) & high) break;
    }
    while (p != end && is(*p, Plain)) ++p;
    return p;
}
inline const unichar *plainEnd(const unichar *p, const unichar *end) {
    while (p != end && is(*p, Plain)) ++p;
    return p;
}

// Makes the strings of a tree, from slabs where they are small.
struct Maker {
    objc_slabs slabs;  // of all its small objects

    ZPString *ascii(const char *bytes, unsigned length) {
        if (length == 0) return ""_zp;
        auto *s = static_cast<ZPInlineCString *>(slabs.allocate(ZPInlineCString::class_(), length + 1));
        if (!s) return _ZPNewInlineCString(bytes, length, nullptr);
        s->fill(bytes, length);
        return s;
    }
    // The units lie behind the object.
    ZPString *wide(const unichar *units, unsigned length) {
        auto *s = static_cast<ZPUnicodeString *>(slabs.allocate(ZPUnicodeString::class_(), length * sizeof(unichar)));
        if (!s) return _ZPNewStringWithUnits(units, length, nullptr);
        s->fill(units, length);
        return s;
    }
};

// The strings made so far. They belong to the tree: the first use of one takes the reference it was made with,
// any other retains it; so none may be released before the text has been read. Open addressing, at most half full.
class Strings {
    struct Slot {
        std::uint32_t hash, index;  // index + 1; 0: free
    };
    struct Made {
        ZPString *string;
        unsigned keyHash;
        bool used;
    };
    Maker &_maker;
    std::unique_ptr<Slot[]> _slots;
    unsigned _mask;
    std::vector<Made> _made;

    // Texts from outside are not to choose their places.
    static std::uint32_t hashOf(const void *bytes, std::size_t count) {
        auto *p = static_cast<const char *>(bytes);
        std::uint64_t word = 0;
        _ZPKeyedHash hash;
        hash.begin(count);
        if (count >= 8) {
            for (std::size_t i = 0; i + 8 < count; i += 8) {
                std::memcpy(&word, p + i, 8);
                hash.add(word);
            }
            std::memcpy(&word, p + count - 8, 8);
        } else if (count >= 4) {
            std::uint32_t first, last;
            std::memcpy(&first, p, 4);
            std::memcpy(&last, p + count - 4, 4);
            word = std::uint64_t(first) << 32 | last;
        } else
            for (std::size_t i = 0; i < count; ++i) word = word << 8 | static_cast<unsigned char>(p[i]);
        hash.add(word);
        return hash.result();
    }
    ZP_COLD void grow() {
        unsigned mask = _mask * 2 + 1;
        std::unique_ptr<Slot[]> larger(new Slot[std::size_t(mask) + 1]());
        for (unsigned i = 0; i <= _mask; ++i) {
            if (!_slots[i].index) continue;
            unsigned at = _slots[i].hash & mask;
            while (larger[at].index) at = (at + 1) & mask;
            larger[at] = _slots[i];
        }
        _slots = std::move(larger);
        _mask = mask;
    }
    template <class F, class M> unsigned find(std::uint32_t hash, const F &same, const M &make) {
        if (_made.size() > _mask / 2) [[unlikely]]
            grow();
        unsigned at = hash & _mask;
        for (; _slots[at].index; at = (at + 1) & _mask)
            if (_slots[at].hash == hash && same(_made[_slots[at].index - 1].string)) return _slots[at].index - 1;
        _made.push_back({nullptr, 0, true});
        _made.back() = {make(), 0, false};
        _slots[at] = {hash, std::uint32_t(_made.size())};
        return unsigned(_made.size()) - 1;
    }

  public:
    /// Room for what a text of that length is likely to hold.
    Strings(Maker &maker, std::size_t textLength) : _maker(maker) {
        std::size_t size = 64;
        while (size < textLength / 16) size *= 2;
        _slots.reset(new Slot[size]());
        _mask = unsigned(size - 1);
        _made.reserve(size / 2);
    }
    Strings(const Strings &) = delete;
    ~Strings() {
        for (Made &made : _made)
            if (!made.used) made.string->release();
    }
    /// The index of the string of characters below 128, or of units of which one is above.
    unsigned ascii(const char *bytes, unsigned length) {
        return find(
            hashOf(bytes, length),
            [=](ZPString *s) {
                if (s->isa == ZPInlineCString::class_()) [[likely]] {
                    auto *inlined = static_cast<ZPInlineCString *>(s);
                    return inlined->byteCount() == length && !std::memcmp(inlined->contents(), bytes, length);
                }
                ZPStringView view = _ZPViewOfString(s);
                return view.bytes && view.length == length && !std::memcmp(view.bytes, bytes, length);
            },
            [=, this] { return _maker.ascii(bytes, length); });
    }
    unsigned wide(const unichar *units, unsigned length) {
        return find(
            hashOf(units, length * sizeof(unichar)),
            [=](ZPString *s) {
                ZPStringView view = _ZPViewOfString(s);
                return view.units && view.length == length && !std::memcmp(view.units, units, length * sizeof(unichar));
            },
            [=, this] { return _maker.wide(units, length); });
    }
    /// The string with a reference for the caller.
    ZPString *take(unsigned index) {
        Made &made = _made[index];
        if (made.used) made.string->retain();
        made.used = true;
        return made.string;
    }
    unsigned keyHash(unsigned index) {
        Made &made = _made[index];
        if (!made.keyHash) made.keyHash = _ZPHashOfObject(made.string);
        return made.keyHash;
    }
};

// Finished objects that wait for their array; each owns a reference.
class Stack {
    std::unique_ptr<id[]> _items;
    std::size_t _capacity = 0;

    ZP_COLD void grow() {
        std::unique_ptr<id[]> larger(new id[_capacity ? _capacity * 2 : 256]);
        std::copy_n(_items.get(), count, larger.get());
        _items = std::move(larger);
        _capacity = _capacity ? _capacity * 2 : 256;
    }

  public:
    std::size_t count = 0;
    Stack() = default;
    Stack(const Stack &) = delete;
    ~Stack() {
        while (count) _items[--count]->release();
    }
    void push(id object) {
        if (count == _capacity) [[unlikely]]
            grow();
        _items[count++] = object;
    }
    id *from(std::size_t index) { return _items.get() + index; }
};

template <class U> struct Reader {
    const U *p, *end;
    Maker maker;
    Strings strings;
    Stack stack;
    struct Pair {
        ZPString *key;  // with a reference, as its value on the stack
        unsigned hash;
    };
    std::vector<Pair> pairs;  // of the dictionaries that are being read
    std::vector<id> replaced;  // keys and values that a later entry took the place of; released at the end
    std::u16string units;
    std::vector<unsigned char> bytes;
    std::string narrowed;

    Reader(const U *text, const U *textEnd) : p(text), end(textEnd), strings(maker, std::size_t(textEnd - text)) {}
    ~Reader() {
        for (const Pair &pair : pairs) pair.key->release();
        for (id object : replaced) object->release();
    }

    // The first character that is not white space or in a comment; 0 at the end.
    ZP_INLINE unsigned skip() {
        if (p != end && *p > '/') [[likely]]
            return *p;
        return skipBlank();
    }
    unsigned skipBlank() {
        for (;;) {
            if (p == end) return 0;
            unsigned c = *p;
            if (is(c, Blank)) {
                ++p;
                continue;
            }
            if (c != '/' || end - p < 2) return c;
            if (p[1] == '/') {
                for (p += 2; p != end && *p != '\n';) ++p;
            } else if (p[1] == '*') {
                for (p += 2;; ++p) {
                    if (end - p < 2) {
                        p = end;
                        return 0;
                    }
                    if (*p == '*' && p[1] == '/') break;
                }
                p += 2;
            } else return c;
        }
    }

    static constexpr unsigned none = ~0u;

    unsigned asciiString(const U *from, unsigned length) {
        if constexpr (sizeof(U) == 1) return strings.ascii(reinterpret_cast<const char *>(from), length);
        else {
            narrowed.assign(from, from + length);
            return strings.ascii(narrowed.data(), length);
        }
    }
    // The string that begins with `c`, as an index into the strings; none when no string begins so.
    unsigned string(unsigned c) {
        if (c == '"') return quoted();
        if (!is(c, Unquoted)) return none;
        const U *from = p, *to = p + 1;
        while (to != end && is(*to, Unquoted)) ++to;
        p = to;
        return asciiString(from, unsigned(to - from));
    }
    unsigned quoted() {
        const U *from = p + 1;
        p = plainEnd(from, end);
        if (p == end) return none;
        if (*p == '"') return asciiString(from, unsigned(p++ - from));
        units.assign(from, p);
        bool ascii = true;
        for (;;) {
            if (p == end) return none;
            unsigned c = *p++;
            if (c == '"') break;
            if (c == '\\') {
                if (!escaped(c)) return none;
            } else if constexpr (sizeof(U) == 1) c = _ZPUnitOfByte(static_cast<unsigned char>(c));
            ascii = ascii && c < 128;
            units.push_back(static_cast<unichar>(c));
            // The run of plain characters that follows.
            const U *run = p;
            p = plainEnd(run, end);
            units.append(run, p);
        }
        if (!ascii) return strings.wide(units.data(), unsigned(units.size()));
        narrowed.assign(units.begin(), units.end());
        return strings.ascii(narrowed.data(), unsigned(narrowed.size()));
    }
    bool escaped(unsigned &c) {
        if (p == end) return false;
        c = *p++;
        if (!_ZPReadEscape(*this, c) && sizeof(U) == 1) c = _ZPUnitOfByte(static_cast<unsigned char>(c));
        return true;
    }
    unsigned peek() const { return p == end ? 0 : *p; }
    unsigned read() { return *p++; }

    // What follows, with a reference that the caller owns; null for anything wrong.
    id value(unsigned level) {
        unsigned c = skip();
        switch (c) {
        case '{': ++p; return dictionary(level);
        case '(': ++p; return array(level);
        case '<': ++p; return data();
        default: {
            unsigned index = string(c);
            return index == none ? id() : id(strings.take(index));
        }
        }
    }
    id array(unsigned level) {
        if (level == _ZPMaximumLevels) return nullptr;
        std::size_t base = stack.count;
        for (;;) {
            if (skip() == ')') break;
            id element = value(level + 1);
            if (!element) return nullptr;
            stack.push(element);
            unsigned c = skip();
            if (c == ',') ++p;
            else if (c != ')') return nullptr;
        }
        ++p;
        std::size_t count = stack.count - base;
        if (!count) return _ZPEmptyArray()->retain();
        if (count >= _ZPCollectionLimit) return nullptr;
        ZPArray *array = _ZPNewArrayAdopting(stack.from(base), unsigned(count), maker.slabs);
        stack.count = base;
        return array;
    }
    id dictionary(unsigned level) {
        if (skip() == '}') {
            ++p;
            return _ZPEmptyDictionary()->retain();
        }
        if (level == _ZPMaximumLevels) return nullptr;
        std::size_t base = pairs.size();
        for (;;) {
            unsigned c = skip();
            if (c == '}') break;
            unsigned index = string(c);
            if (index == none || skip() != '=') return nullptr;
            ++p;
            pairs.push_back({strings.take(index), strings.keyHash(index)});
            id object = value(level + 1);
            if (!object) return nullptr;
            stack.push(object);
            c = skip();
            if (c == ';') ++p;
            else if (c != '}') return nullptr;
        }
        ++p;
        std::size_t count = pairs.size() - base;
        if (count >= _ZPCollectionLimit) return nullptr;
        ZPSimpleDictionary *table;
        ZPDictionary *dictionary = _ZPNewDictionaryToFill(unsigned(count), maker.slabs, table);
        stack.count -= count;
        id *values = stack.from(stack.count);
        if (count >= 64 && areCrowded(&pairs[base], count, ZPSimpleBuckets(table) - 1)) [[unlikely]] {
            table->isEqual = _ZPKeyedObjectsEqual;
            for (std::size_t i = base; i < pairs.size(); ++i) pairs[i].hash = _ZPKeyedHashOfObject(pairs[i].key);
        }
        for (unsigned i = 0; i < count; ++i) set(table, pairs[base + i], values[i]);
        pairs.resize(base);
        return dictionary;
    }
    // Whether many different keys would begin their search for a bucket at the same ones.
    static bool areCrowded(const Pair *pairs, std::size_t count, unsigned mask) {
        auto isMuch = [mask](const auto &list, std::size_t n) {
            std::vector<unsigned> met(std::size_t(mask) + 1);
            std::uint64_t steps = 0;
            for (std::size_t i = 0; i < n; ++i) steps += met[list[i].hash & mask]++;
            return steps > 16 * n;
        };
        if (!isMuch(pairs, count)) return false;
        std::vector<Pair> each(pairs, pairs + count);  // a key may come many times
        std::sort(each.begin(), each.end(), [](const Pair &a, const Pair &b) { return a.key < b.key; });
        auto same = [](const Pair &a, const Pair &b) { return a.key == b.key; };
        each.erase(std::unique(each.begin(), each.end(), same), each.end());
        return isMuch(each, each.size());
    }
    // Equal keys are identical here; a later value takes the place of an earlier one. The table has room.
    void set(ZPSimpleDictionary *table, const Pair &pair, id object) {
        ZPSimpleDictionaryBucket *place, *b = ZPSimpleFind(table, pair.key, pair.hash, ZPSimpleIdentityOnly(), &place);
        if (b) [[unlikely]] {
            replaced.push_back(id(static_cast<objc_object *>(b->value)));
            replaced.push_back(pair.key);
            b->value = object.pointer();
            return;
        }
        ZPSimplePut(table, place,
                    {(pair.hash & ZPSimpleHashMask) | ZPSimpleOccupied, static_cast<objc_object *>(pair.key),
                     object.pointer()});
    }
    id data() {
        bytes.clear();
        for (;;) {
            unsigned c = skip();
            if (c == '>') break;
            // A token: an even number of digits, and nothing else that a bare string may hold.
            const U *from = p, *to = p;
            while (to != end && is(*to, Unquoted)) ++to;
            std::size_t count = std::size_t(to - from);
            if (!count || count % 2) return nullptr;
            std::size_t at = bytes.size();
            bytes.resize(at + count / 2);
            unsigned wrong = 0;
            for (unsigned char *byte = bytes.data() + at; from != to; from += 2) {
                unsigned high = hexDigit(from[0]), low = hexDigit(from[1]);
                wrong |= high | low;
                *byte++ = static_cast<unsigned char>(high << 4 | low);
            }
            if (wrong > 15) return nullptr;
            p = to;
        }
        ++p;
        return ZPMutableData::alloc()->initWithBytes_length(bytes.data(), unsigned(bytes.size()));
    }
};

template <class U> id read(const U *text, unsigned length) {
    // A zero ends the text.
    const U *end = std::find(text, text + length, U(0));
    Reader<U> reader(text, end);
    id tree = reader.value(0);
    if (tree && reader.skip()) {
        tree->release();
        return nullptr;
    }
    return tree;
}

}  // namespace

id _ZPReadPropertyList(ZPString *string) {
    ZPStringView view = _ZPViewOfString(string);
    ZPStringEncoding encoding = string->fastestEncoding();
    if (view.bytes && encoding == ZPKESTRELStringEncoding) return read(view.bytes, view.length);
    if (view.units && encoding == ZPUnicodeStringEncoding) return read(view.units, view.length);
    return nullptr;
}
