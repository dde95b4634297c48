// SPDX-License-Identifier: MIT
// Classes, selectors and methods by name, and the texts of the library's error messages.
#pragma once

#include <Bedrock/platform/ZPTypes.h>

ZP_FORWARD(ZPString);

extern "C" {
/// The selector's name, autoreleased. A null selector raises ZPInvalidArgumentException.
ZP_EXPORT ZPString *ZPStringFromSelector(SEL selector);
/// The selector of a name, registered on first use; the null selector for null. A name that is no C string raises
/// ZPCharacterConversionException, here and below.
ZP_EXPORT SEL ZPSelectorFromString(ZPString *name);
/// The class of a name, else what `_ZPAltClassNameFromString` answers, else null.
ZP_EXPORT Class ZPClassFromString(ZPString *name);
/// The name of a class, which must not be null; autoreleased.
ZP_EXPORT ZPString *ZPStringFromClass(Class cls);
/// YES for "yes" and "y" whatever the case; NO for anything else, and null.
ZP_EXPORT BOOL ZPBOOLFromString(ZPString *string);
/// Asked by ZPClassFromString for a class that the runtime does not know; null, as at first: nothing is asked.
ZP_EXPORT extern Class (*_ZPAltClassNameFromString)(ZPString *name);

/// "-[Class selector]", or "+[Class selector]" when the receiver is a class; autoreleased.
ZP_EXPORT ZPString *_ZPFullMethodName(id receiver, SEL selector);
/// "*** -[Class selector]", which stands for the "%@" that begins a method's error message; autoreleased.
ZP_EXPORT ZPString *_ZPMethodExceptionProem(id receiver, SEL selector);
/// Raises ZPInvalidArgumentException for an abstract operation that a subclass of `abstractClass` has not supplied.
[[noreturn]] ZP_EXPORT void ZPRequestConcreteImplementation(id receiver, SEL selector, Class abstractClass);
/// Raises ZPInvalidArgumentException for an initialiser sent to an abstract object.
[[noreturn]] ZP_EXPORT void _ZPRequestConcreteObject(id receiver, SEL selector);
}
