// SPDX-License-Identifier: MIT
// Names of classes, selectors and methods as strings and back, and the texts of abstract methods' exceptions.
#include <Bedrock/core/Core+Internal.h>
#include <Bedrock/core/Scope.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

Class (*_ZPAltClassNameFromString)(ZPString *name);

static ZPString *stringWithCString(const char *text) {
    // No strings in this process: the text itself is all there is.
    if (!_ZPStringAbove::class_()) objc_fatal("%s", text);
    if (ZPString *string = _ZPStringAbove::stringWithCString(text)) return string;
    // Bytes that are no text in the default encoding: a message with gaps is better than none.
    std::string shown = text;
    for (char &c : shown)
        if (c & 0x80) c = '?';
    return _ZPStringAbove::stringWithCString(shown.c_str());
}

ZPString *_ZPStringWithCText(const char *format, ...) {
    char local[512];
    std::va_list list;
    va_start(list, format);
    int length = std::vsnprintf(local, sizeof local, format, list);
    va_end(list);
    if (length < int(sizeof local)) return stringWithCString(local);
    ZPScope buffer{static_cast<char *>(std::malloc(length + 1)), std::free};
    if (!buffer) return stringWithCString(local);
    va_start(list, format);
    std::vsnprintf(buffer, length + 1, format, list);
    va_end(list);
    return stringWithCString(buffer);
}

const char *_ZPCText(ZPString *string) { return _ZPAbove(string)->cString(); }

ZPString *ZPStringFromSelector(SEL selector) {
    if (!selector) ZPException::raise_format(ZPInvalidArgumentException, "*** ZPStringFromSelector(): 0 selector"_zp);
    return stringWithCString(sel_getName(selector));
}

SEL ZPSelectorFromString(ZPString *name) { return sel_getUid(_ZPCText(name)); }

Class ZPClassFromString(ZPString *name) {
    Class cls = objc_getClass(_ZPCText(name));
    return cls || !_ZPAltClassNameFromString ? cls : _ZPAltClassNameFromString(name);
}

ZPString *ZPStringFromClass(Class cls) { return stringWithCString(cls->name); }

BOOL ZPBOOLFromString(ZPString *string) {
    if (!string) return NO;
    // Unit by unit: the text may hold a null, or what no C string can.
    unsigned length = _ZPAbove(string)->length();
    const char *word = length == 1 ? "y" : length == 3 ? "yes" : nullptr;
    if (!word) return NO;
    for (unsigned i = 0; i < length; ++i)
        if ((_ZPAbove(string)->characterAtIndex(i) | 0x20) != word[i]) return NO;
    return YES;
}

static ZPString *methodName(const char *prefix, id receiver, SEL selector) {
    Class cls = receiver->objectClass();
    bool isClass = static_cast<objc_object *>(cls) == receiver.pointer();
    return _ZPStringWithCText("%s%c[%s %s]", prefix, isClass ? '+' : '-', cls ? cls->name : "nil",
                              selector ? sel_getName(selector) : "(null)");
}

ZPString *_ZPFullMethodName(id receiver, SEL selector) { return methodName("", receiver, selector); }
ZPString *_ZPMethodExceptionProem(id receiver, SEL selector) { return methodName("*** ", receiver, selector); }

void ZPRequestConcreteImplementation(id receiver, SEL selector, Class abstractClass) {
    Class cls = receiver.pointer()->isa;
    const char *name = sel_getName(selector);
    if (cls == abstractClass)
        ZPException::raise_format(
            ZPInvalidArgumentException,
            "*** -%s cannot be sent to an abstract object of class %s: Create a concrete instance!"_zp, name,
            cls->name);
    ZPException::raise_format(ZPInvalidArgumentException,
                              "*** -%s only defined for abstract class.  Define -[%s %s]!"_zp, name, cls->name, name);
}

void _ZPRequestConcreteObject(id receiver, SEL selector) {
    ZPException::raise_format(ZPInvalidArgumentException,
                              "*** initialization method -%s cannot be sent to an abstract object of class %s: "
                              "Create a concrete instance!"_zp,
                              sel_getName(selector), receiver.pointer()->isa->name);
}
