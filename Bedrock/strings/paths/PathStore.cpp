// SPDX-License-Identifier: MIT
// The string of a path: the length in `_lengthAndRefCount`, then the units inside the object. References are counted
// beside the instance, so the length has the whole word. There is no separator at the end, except in "\" and "C:\".
#include <Bedrock/strings/paths/Paths.h>
#include <Bedrock/core/Scope.h>

#include <Bedrock/collections/ZPArray.h>

#include <algorithm>

ZPPathStore2 *_ZPNewPathStore(const unichar *units, unsigned length, ZPZone *zone) {
    auto *store = static_cast<ZPPathStore2 *>(_zoneAllocBare(ZPPathStore2::class_(), length * sizeof(unichar), zone));
    if (!store) [[unlikely]]
        _ZPRaiseOutOfMemory("a string");
    std::copy_n(units, length, _ZPUnitsOfPathStore(store));
    _ZPStripTrailingPathSlashes(_ZPUnitsOfPathStore(store), &length);
    store->_lengthAndRefCount = length;
    return store;
}

namespace {

struct PathStore : ZPPathStore2 {
    unichar *units() { return _ZPUnitsOfPathStore(this); }
    unsigned count() { return _lengthAndRefCount; }
    ZPString *part(unsigned from, unsigned to) { return _ZPPathStore(units() + from, to - from); }

    static ZPPathStore2 *pathStoreWithCharacters_length(Class, const unichar *characters, unsigned length) {
        return _ZPNewPathStore(characters, length, nullptr)->autorelease();
    }
    static ZPPathStore2 *pathStoreWithCString(Class, const char *bytes) {
        if (!bytes) return nullptr;
        _ZPBlock<void> block;
        unsigned length = 0;
        BOOL isASCII = NO;
        std::size_t given = std::strlen(bytes);
        if (given > 0x7FFFFFFF || !_ZPConvertToASCIIorUnicode(bytes, unsigned(given), _ZPDefaultCStringEncoding(),
                                                              block.place(), &length, &isASCII, nullptr))
            return nullptr;
        if (!isASCII) return _ZPNewPathStore(static_cast<unichar *>(block.get()), length, nullptr)->autorelease();
        ZPStackBuffer<unichar, 512> wide(length);
        std::copy_n(static_cast<unsigned char *>(block.get()), length, wide.memory);
        return _ZPNewPathStore(wide.memory, length, nullptr)->autorelease();
    }
    static ZPString *pathWithComponents(Class self, ZPArray *components) {
        // The path so far; it grows by doubling, so there is no longest one.
        struct Text {
            unichar *units = nullptr;
            unsigned length = 0, capacity = 0;
            ~Text() {
                if (units) ZPZoneFree(nullptr, units);
            }
        } path;
        unsigned count = components->count();
        for (unsigned i = 0; i < count; ++i) {
            ZPString *component = components->objectAtIndex(i);
            _ZPPathBuffer part(component, 0);
            std::uint64_t needed = std::uint64_t(path.length) + 1 + part.length;
            if (needed > path.capacity) {
                std::uint64_t capacity = std::max<std::uint64_t>(2 * needed, 256);
                if (capacity > 0x7FFFFFFF) _ZPRaiseOutOfMemory("a string");
                path.units = _ZPReallocate(path.units, capacity, nullptr, "a string");
                path.capacity = unsigned(capacity);
            }
            if (!_ZPAppendPathComponent(path.units, &path.length, path.capacity, part.units, part.length))
                _ZPLogPathRefusal(self, "pathWithComponents:"_sel, component,
                                  ZPString::stringWithCharacters_length(path.units, path.length));
        }
        _ZPTransmutePathSlashes(path.units, &path.length, '\\');
        _ZPStripTrailingPathSlashes(path.units, &path.length);
        return _ZPPathStore(path.units, path.length);
    }

    unsigned length() { return count(); }
    unichar characterAtIndex(unsigned index) {
        if (index >= count()) [[unlikely]]
            raiseBounds("characterAtIndex:"_sel, index, count());
        return units()[index];
    }
    void getCharacters_range(unichar *buffer, ZPRange range) {
        if (range.location > count() || range.length > count() - range.location) [[unlikely]]
            raiseBounds("getCharacters:range:"_sel, range.location + range.length, count() + 1);
        std::copy_n(units() + range.location, range.length, buffer);
    }
    [[noreturn]] ZP_COLD void raiseBounds(SEL selector, unsigned index, unsigned bounds) {
        ZPException::raise_format(ZPRangeException, "%@: index (%d) beyond bounds (%d)"_zp,
                                  _ZPMethodExceptionProem(this, selector), index, bounds);
    }
    id copyWithZone(ZPZone *zone) {
        if (ZPShouldRetainWithZone(this, zone)) return self()->retain();
        return _ZPNewPathStore(units(), count(), zone);
    }

    ZPArray *pathComponents() { return _ZPPathComponents(units(), count()); }
    BOOL isAbsolutePath() { return _ZPIsAbsolutePath(units(), count()); }
    ZPString *lastPathComponent() {
        unsigned start = _ZPStartOfLastPathComponent(units(), count());
        return start ? part(start, count()) : this;
    }
    ZPString *stringByDeletingLastPathComponent() {
        return part(0, _ZPLengthAfterDeletingLastPathComponent(units(), count()));
    }
    ZPString *pathExtension() {
        unsigned dot = _ZPStartOfPathExtension(units(), count());
        return dot ? self()->substringWithRange({dot + 1, count() - dot - 1}) : ""_zp;
    }
    ZPString *stringByDeletingPathExtension() { return part(0, _ZPLengthAfterDeletingPathExtension(units(), count())); }
    template <class F> ZPString *appending(SEL selector, ZPString *addition, F append) {
        _ZPPathBuffer added(addition, 0);
        std::uint64_t room = std::uint64_t(count()) + 1 + added.length;
        _ZPPathBuffer path(this, unsigned(std::min<std::uint64_t>(room, 0xFFFFFFFF)));
        if (!append(path.units, &path.length, path.capacity, added.units, added.length)) {
            _ZPLogPathRefusal(this, selector, addition, this);
            return this;
        }
        path.normalize();
        return _ZPPathStore(path.units, path.length);
    }
    ZPString *stringByAppendingPathComponent(ZPString *component) {
        return appending("stringByAppendingPathComponent:"_sel, component, _ZPAppendPathComponent);
    }
    ZPString *stringByAppendingPathExtension(ZPString *extension) {
        return appending("stringByAppendingPathExtension:"_sel, extension, _ZPAppendPathExtension);
    }
    ZPString *stringByAbbreviatingWithTildeInPath() {
        _ZPPathBuffer path(this);
        _ZPAbbreviatePathWithTilde(path.units, &path.length);
        return _ZPPathStore(path.units, path.length);
    }
    ZPString *stringByExpandingTildeInPath() {
        _ZPPathBuffer path(this);
        _ZPExpandTildeInPath(path.units, &path.length, path.capacity);
        return _ZPPathStore(path.units, path.length);
    }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPPathStore2, PathStore, length, characterAtIndex, getCharacters_range, copyWithZone, pathComponents,
                  isAbsolutePath, lastPathComponent, stringByDeletingLastPathComponent, stringByAppendingPathComponent,
                  pathExtension, stringByDeletingPathExtension, stringByAppendingPathExtension,
                  stringByAbbreviatingWithTildeInPath, stringByExpandingTildeInPath,
                  classMethods(pathStoreWithCharacters_length, pathStoreWithCString, pathWithComponents));
