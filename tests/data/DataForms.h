// SPDX-License-Identifier: MIT
// Every form in which bytes can be stored, and what the tests of data share.
#pragma once

#include <support/Objects.h>

#include <unistd.h>

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

/// A directory of its own that goes away with it.
struct Directory {
    std::filesystem::path path;
    Directory() {
        std::string name = (std::filesystem::temp_directory_path() / "bedrock-data-XXXXXX").string();
        path = mkdtemp(name.data());
    }
    ~Directory() { std::filesystem::remove_all(path); }
    /// The library's path of a file in it.
    ZPString *operator/(const char *name) const { return ZPString::stringWithCString((path / name).c_str()); }
    std::string read(const char *name) const {
        std::ifstream in(path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void write(const char *name, const std::string &bytes) const {
        std::ofstream(path / name, std::ios::binary) << bytes;
    }
    unsigned count() const { return unsigned(std::distance(std::filesystem::directory_iterator(path), {})); }
};

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
