// SPDX-License-Identifier: MIT
// The retained fields of the library's own classes.
#pragma once

#include <Bedrock/core/ZPObject.h>

/// Retains the new value, then releases the old one; the class of the field may be only declared.
template <class T> void ZPReplaceField(T *&field, std::type_identity_t<T> *value) {
    id(static_cast<objc_object *>(static_cast<void *>(value)))->retain();
    id old = id(static_cast<objc_object *>(static_cast<void *>(field)));
    field = value;
    old->release();
}
