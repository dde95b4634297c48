// The direct reader of property-list text: the common case of the parser, without its tables. It gives the
// very tree that the parser gives, equal strings being one object, or gives up on the first thing it does not
// like; the parser then reads the text again and says what is wrong.
#include <Bedrock/archiving/ZPPropertyListReader+Internal.h>
#include <Bedrock/collections/ZPArray+Internal.h>
#include <Bedrock/collections/ZPDictionary+Internal.h>
#include <Bedrock/data/ZPData+Internal.h>
#include <Bedrock/strings/ZPString+Internal.h>

#include <cstring>
#include <memory>

namespace {

enum : unsigned char { Unquoted = 1, Blank = 2, Hex = 4, Plain = 8 };
struct Classes {
    unsigned char of[256];
    constexpr Classes() : of() {
        for (unsigned c = 0; c < 256; ++c) {
            bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'), digit = c >= '0' && c <= '9';
            if (letter || digit || c == '_' || c == '$' || c == '/' || c == ':' || c == '.') of[c] |= Unquoted;
            if ((c >= 9 && c <= 13) || c == ' ') of[c] |= Blank;
            if (digit || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F')) of[c] |= Hex;
            if (c && c < 128 && c != '"' && c != '\\') of[c] |= Plain;  // as it is in quotes
        }
    }
};
constexpr Classes classes;
ZP_INLINE bool is(unsigned c, unsigned char cls) { return c < 256 && classes.of[c] & cls; }

// The strings made so far, which it owns: open addressing, kept at most half full.
class Strings {
    struct Entry {
        ZPString *string;
        std::uint32_t hash;
        unsigned keyHash;
    };
    std::unique_ptr<Entry[]> _entries;
    unsigned _mask, _count = 0;

    static std::uint64_t mix(std::uint64_t h, std::uint64_t word) {
        h = (h ^ word) * 0x9E3779B97F4A7C15u;
        return h ^ h >> 32;
    }
    static std::uint32_t hashOf(const void *bytes, std::size_t count) {
        auto *p = static_cast<const char *>(bytes);
        std::uint64_t h = count * 0x9E3779B97F4A7C15u, word;
        for (; count >= 8; p += 8, count -= 8) {
            std::memcpy(&word, p, 8);
            h = mix(h, word);
        }
        word = 0;
        std::memcpy(&word, p, count);
        h = mix(h, word);
        return std::uint32_t(h >> 16);
    }
    ZP_COLD void grow() {
        unsigned mask = _mask * 2 + 1;
        std::unique_ptr<Entry[]> larger(new Entry[std::size_t(mask) + 1]());
        for (unsigned i = 0; i <= _mask; ++i) {
            if (!_entries[i].string) continue;
            unsigned at = _entries[i].hash & mask;
            while (larger[at].string) at = (at + 1) & mask;
            larger[at] = _entries[i];
        }
        _entries = std::move(larger);
        _mask = mask;
    }
    template <class F, class M> unsigned find(std::uint32_t hash, const F &same, const M &make) {
        if (_count > _mask / 2) [[unlikely]] grow();
        unsigned at = hash & _mask;
        for (; _entries[at].string; at = (at + 1) & _mask)
            if (_entries[at].hash == hash && same(_entries[at].string)) return at;
        _entries[at] = {make(), hash, 0};
        ++_count;
        return at;
    }

  public:
    /// Room for what a text of that length is likely to hold.
    explicit Strings(std::size_t textLength) {
        std::size_t size = 64;
        while (size < textLength / 10) size *= 2;
        _entries.reset(new Entry[size]());
        _mask = unsigned(size - 1);
    }
    Strings(const Strings &) = delete;
    ~Strings() {
        for (unsigned i = 0; i <= _mask; ++i)
            if (ZPString *string = _entries[i].string) string->release();
    }
    /// The index of the string of characters below 128, or of units of which one is above; valid until the next.
    unsigned ascii(const char *bytes, unsigned length) {
        return find(hashOf(bytes, length), [=](ZPString *s) {
            if (s->isa == ZPInlineCString::class_()) {
                auto *inlined = static_cast<ZPInlineCString *>(s);
                return inlined->_flags.numBytes == length && !std::memcmp(inlined->contents(), bytes, length);
            }
            ZPStringView view = _ZPViewOfString(s);
            return view.bytes && view.length == length && !std::memcmp(view.bytes, bytes, length);
        }, [=] { return _ZPNewInlineCString(bytes, length, nullptr); });
    }
    unsigned wide(const unichar *units, unsigned length) {
        return find(hashOf(units, length * sizeof(unichar)), [=](ZPString *s) {
            ZPStringView view = _ZPViewOfString(s);
            return view.units && view.length == length && !std::memcmp(view.units, units, length * sizeof(unichar));
        }, [=] { return _ZPNewStringWithUnits(units, length, nullptr); });
    }
    ZPString *at(unsigned index) const { return _entries[index].string; }
    unsigned keyHash(unsigned index) {
        Entry &entry = _entries[index];
        if (!entry.keyHash) {
            ZPStringView view = _ZPViewOfString(entry.string);
            entry.keyHash = view.bytes ? ZPHashCString(reinterpret_cast<const char *>(view.bytes), view.length)
                                       : ZPHashCharacters(view.units, view.length);
        }
        return entry.keyHash;
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
        if (count == _capacity) [[unlikely]] grow();
        _items[count++] = object;
    }
    id *from(std::size_t index) { return _items.get() + index; }
};

template <class U> struct Reader {
    const U *p, *end;
    Strings strings;
    Stack stack;
    struct Pair {
        ZPString *key;  // the strings own it
        unsigned hash;
    };
    std::vector<Pair> pairs;  // of the dictionaries that are being read; their values wait on the stack
    std::u16string units;
    std::vector<unsigned char> bytes;
    std::string narrowed;

    // The first character that is not white space or in a comment; 0 at the end.
    unsigned skip() {
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
        const U *from = p++;
        while (p != end && is(*p, Unquoted)) ++p;
        return asciiString(from, unsigned(p - from));
    }
    unsigned quoted() {
        const U *from = ++p;
        while (p != end && is(*p, Plain)) ++p;
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
            while (p != end && is(*p, Plain)) ++p;
            units.append(run, p);
        }
        if (!ascii) return strings.wide(units.data(), unsigned(units.size()));
        narrowed.assign(units.begin(), units.end());
        return strings.ascii(narrowed.data(), unsigned(narrowed.size()));
    }
    bool escaped(unsigned &c) {
        if (p == end) return false;
        c = *p++;
        switch (c) {
        case 'a': c = 7; break;
        case 'b': c = 8; break;
        case 'f': c = 12; break;
        case 'n': c = 10; break;
        case 'r': c = 13; break;
        case 't': c = 9; break;
        case 'v': c = 11; break;
        case 'U':
            c = 0;
            for (int i = 0; i < 4 && p != end && is(*p, Hex); ++i) c = c << 4 | digit(*p++);
            break;
        case '0': case '1': case '2': case '3': case '4': case '5': case '6': case '7':
            c -= '0';
            for (int i = 0; i < 2 && p != end && *p >= '0' && *p <= '7'; ++i) c = c << 3 | unsigned(*p++ - '0');
            c = ZPKESTRELToPrecompUnicode(static_cast<unsigned char>(c));
            break;
        default:
            if constexpr (sizeof(U) == 1) c = _ZPUnitOfByte(static_cast<unsigned char>(c));
        }
        return true;
    }
    static unsigned digit(unsigned c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; }

    // What follows, with a reference that the caller owns; null for anything wrong.
    id value(unsigned level) {
        unsigned c = skip();
        switch (c) {
        case '{': ++p; return dictionary(level);
        case '(': ++p; return array(level);
        case '<': ++p; return data();
        default: {
            unsigned index = string(c);
            return index == none ? id() : strings.at(index)->retain();
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
        ZPConcreteArray *array = ZPConcreteArray::allocate(unsigned(count), nullptr);
        std::memcpy(static_cast<void *>(array->_items), static_cast<void *>(stack.from(base)), count * sizeof(id));
        array->_info = unsigned(count);
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
            ZPString *key = strings.at(index);
            unsigned hash = strings.keyHash(index);
            id object = value(level + 1);
            if (!object) return nullptr;
            stack.push(object);
            pairs.push_back({key, hash});
            c = skip();
            if (c == ';') ++p;
            else if (c != '}') return nullptr;
        }
        ++p;
        unsigned count = unsigned(pairs.size() - base);
        ZPConcreteDictionary *dictionary = ZPAllocateObject(ZPConcreteDictionary::class_(), 0, nullptr);
        dictionary->_table = ZPCreateSimpleDictionary(count, _ZPStoredObjectsEqual, nullptr);
        stack.count -= count;
        id *values = stack.from(stack.count);
        for (unsigned i = 0; i < count; ++i) set(dictionary, pairs[base + i].key, pairs[base + i].hash, values[i]);
        pairs.resize(base);
        return dictionary;
    }
    // Equal keys are identical here; a later value takes the place of an earlier one.
    static void set(ZPConcreteDictionary *dictionary, ZPString *key, unsigned hash, id object) {
        ZPSimpleDictionaryBucket *place, *b = ZPSimpleFind(dictionary->_table, key, hash, ZPSimpleIdentityOnly(), &place);
        if (b) {
            _ZPValue(b)->release();
            b->value = object.pointer();
            return;
        }
        ZPSimpleAdd(&dictionary->_table, place, {(hash & ZPSimpleHashMask) | ZPSimpleOccupied, static_cast<objc_object *>(key), object.pointer()});
        key->retain();
    }
    id data() {
        bytes.clear();
        for (;;) {
            unsigned c = skip();
            if (c == '>') break;
            if (!is(c, Hex)) return nullptr;
            for (;;) {
                if (end - p < 2 || !is(p[1], Hex)) return nullptr;
                bytes.push_back(static_cast<unsigned char>(digit(*p) << 4 | digit(p[1])));
                p += 2;
                if (p == end || !is(*p, Unquoted)) break;
                if (!is(*p, Hex)) return nullptr;
            }
        }
        ++p;
        return ZPMutableData::alloc()->initWithBytes_length(bytes.data(), unsigned(bytes.size()));
    }
};

template <class U> id read(const U *text, unsigned length) {
    // A zero ends the text.
    const U *end = std::find(text, text + length, U(0));
    Reader<U> reader{text, end, Strings(std::size_t(end - text))};
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
