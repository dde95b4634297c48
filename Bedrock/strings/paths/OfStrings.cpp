// SPDX-License-Identifier: MIT
// The path operations of every string. Where units have to move, they are copied into a buffer that holds the
// longest path the host takes; a longer path gets a buffer of its own size, so that none is ever cut short.
#include <Bedrock/strings/paths/Paths.h>

#include <Bedrock/collections/ZPArray.h>

void _ZPLogPathRefusal(id receiver, SEL selector, ZPString *part, id path) {
    const char *name = sel_getName(selector);
    ZPString *what = std::strstr(name, "Extension") ? "extension"_zp : "path"_zp;
    ZPLog("%@: cannot append %@ '%@' to path '%@'"_zp, _ZPMethodExceptionProem(receiver, selector), what, part, path);
}

namespace {

struct PathMethods : ZPString {
    static ZPString *pathWithComponents(Class, ZPArray *components) {
        return ZPPathStore2::pathWithComponents(components);
    }
    ZPArray *pathComponents() {
        if (ZPStringView view = _ZPViewOfString(this); view.bytes) return _ZPPathComponents(view.bytes, view.length);
        _ZPPathBuffer path(this);
        return _ZPPathComponents(path.units, path.length);
    }
    BOOL isAbsolutePath() {
        unichar first[3];
        unsigned n = std::min(self()->length(), 3u);
        self()->getCharacters_range(first, {0, n});
        return _ZPIsAbsolutePath(first, n);
    }
    ZPString *lastPathComponent() {
        _ZPPathBuffer path(this);
        path.normalize();
        unsigned start = _ZPStartOfLastPathComponent(path.units, path.length);
        return _ZPPathStore(path.units + start, path.length - start);
    }
    ZPString *stringByDeletingLastPathComponent() {
        _ZPPathBuffer path(this);
        path.normalize();
        return _ZPPathStore(path.units, _ZPLengthAfterDeletingLastPathComponent(path.units, path.length));
    }
    ZPString *pathExtension() {
        _ZPPathBuffer path(this);
        path.normalize();
        unsigned dot = _ZPStartOfPathExtension(path.units, path.length);
        return dot ? ZPString::stringWithCharacters_length(path.units + dot + 1, path.length - dot - 1) : ""_zp;
    }
    ZPString *stringByDeletingPathExtension() {
        _ZPPathBuffer path(this);
        path.normalize();
        return _ZPPathStore(path.units, _ZPLengthAfterDeletingPathExtension(path.units, path.length));
    }
    ZPString *stringByAppendingPathComponent(ZPString *component) {
        _ZPPathBuffer path(this), part(component, 0);
        if (!_ZPAppendPathComponent(path.units, &path.length, _ZPPathCapacity, part.units, part.length)) {
            _ZPLogPathRefusal(this, "stringByAppendingPathComponent:"_sel, component, this);
            return this;
        }
        path.normalize();
        return _ZPPathStore(path.units, path.length);
    }
    ZPString *stringByAppendingPathExtension(ZPString *extension) {
        _ZPPathBuffer part(extension, 0);
        std::uint64_t room = std::uint64_t(self()->length()) + 1 + part.length;
        _ZPPathBuffer path(this, unsigned(std::min<std::uint64_t>(room, 0xFFFFFFFF)));
        if (!_ZPAppendPathExtension(path.units, &path.length, path.capacity, part.units, part.length)) {
            _ZPLogPathRefusal(this, "stringByAppendingPathExtension:"_sel, extension, this);
            return this;
        }
        path.normalize();
        return _ZPPathStore(path.units, path.length);
    }
    ZPString *stringByAbbreviatingWithTildeInPath() {
        _ZPPathBuffer path(this);
        path.normalize();
        _ZPAbbreviatePathWithTilde(path.units, &path.length);
        return _ZPPathStore(path.units, path.length);
    }
    ZPString *stringByExpandingTildeInPath() {
        _ZPPathBuffer path(this);
        _ZPExpandTildeInPath(path.units, &path.length, path.capacity);
        path.normalize();
        return _ZPPathStore(path.units, path.length);
    }
    ZPString *stringByStandardizingPath() {
        _ZPPathBuffer path(this);
        _ZPExpandTildeInPath(path.units, &path.length, path.capacity);
        _ZPStandardizePath(path.units, &path.length);
        return _ZPPathStore(path.units, path.length);
    }
    ZPString *stringByResolvingSymlinksInPath() {
        _ZPPathBuffer path(this);
        _ZPExpandTildeInPath(path.units, &path.length, path.capacity);
        _ZPStandardizePath(path.units, &path.length);
        _ZPConvertPathToLongFileSystemName(path.units, &path.length, path.capacity);
        return _ZPPathStore(path.units, path.length);
    }
    ZPArray *stringsByAppendingPaths(ZPArray *paths) {
        if (self()->isEqualToString(""_zp)) return paths->copyWithZone(self()->zone())->autorelease();
        unsigned count = paths->count();
        ZPMutableArray *joined = ZPMutableArray::arrayWithCapacity(count);
        for (unsigned i = 0; i < count; ++i)
            joined->addObject(self()->stringByAppendingPathComponent(paths->objectAtIndex(i)));
        return joined;
    }
};

struct ZPArrayPathExtensions : ZPArray {
    ZPArray *pathsMatchingExtensions(ZPArray *extensions) {
        unsigned count = self()->count();
        ZPMutableArray *matching = ZPMutableArray::arrayWithCapacity(count);
        for (unsigned i = 0; i < count; ++i) {
            ZPString *path = self()->objectAtIndex(i), *extension = path->pathExtension();
            if (extension->length() && extensions->containsObject(extension)) matching->addObject(path);
        }
        return matching;
    }
};

}  // namespace

ZP_CATEGORY(ZPString, PathMethods, pathComponents, isAbsolutePath, lastPathComponent, stringByDeletingLastPathComponent,
            stringByAppendingPathComponent, pathExtension, stringByDeletingPathExtension,
            stringByAppendingPathExtension, stringByAbbreviatingWithTildeInPath, stringByExpandingTildeInPath,
            stringByStandardizingPath, stringByResolvingSymlinksInPath, stringsByAppendingPaths,
            classMethods(pathWithComponents));

ZP_CATEGORY(ZPArray, ZPArrayPathExtensions, pathsMatchingExtensions);
