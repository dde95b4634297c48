// SPDX-License-Identifier: MIT
// Every form in which bytes can be stored, and what the tests of data share.
#pragma once

#include <support/Objects.h>

namespace data {

using Pool = ZPAutoreleasePoolScope;

inline std::string textOf(ZPData *d) {
    return d->length() ? std::string(static_cast<const char *>(d->bytes()), d->length()) : std::string();
}
inline ZPData *make(const std::string &bytes) {
    return ZPData::dataWithBytes_length(bytes.data(), unsigned(bytes.size()));
}
inline ZPMutableData *makeMutable(const std::string &bytes) {
    return ZPMutableData::dataWithBytes_length(bytes.data(), unsigned(bytes.size()));
}

/// A client's data that supplies the primitives alone.
struct ClientData : ZPData {
    ZP_CLASS(ClientData)
    std::string _text;
    unsigned length() { return unsigned(_text.size()); }
    const void *bytes() { return _text.data(); }
};

struct Form {
    const char *name;
    ZPData *(*make)(const std::string &bytes);
};
const std::vector<Form> &forms();

template <class F> void inEveryForm(const std::string &bytes, F f) {
    for (const Form &form : forms()) {
        SCOPED_TRACE(form.name);
        Pool pool;
        f(form.make(bytes));
    }
}

}  // namespace data
