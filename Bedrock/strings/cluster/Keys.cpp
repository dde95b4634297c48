// SPDX-License-Identifier: MIT
// Hashes of keys that come from outside.
#include <Bedrock/platform/host/Host.h>
#include <Bedrock/platform/kernel/MakeOnce.h>
#include <Bedrock/strings/cluster/Cluster.h>
#include <Bedrock/strings/cluster/Keys.h>

const _ZPKeyedHash::Key &_ZPKeyedHash::key() {
    static Key *made;
    return *ZPMakeOnce(made, [] {
        auto *key = new Key;
        ZPHostRandomBytes(key, sizeof *key);
        key->factor |= 1;
        return key;
    });
}

unsigned _ZPKeyedHashOfObject(id object) {
    if (!object->isKindOfClass(ZPString::class_())) return object->hash();
    return _ZPWithHeldUnits(object.as<ZPString>(), [](auto &&units, unsigned length) {
        _ZPKeyedHash hash;
        hash.begin(length);
        for (unsigned i = 0; i < length; i += 4) {
            std::uint64_t word = 0;
            for (unsigned k = i; k < length && k < i + 4; ++k) word = word << 16 | units[k];
            hash.add(word);
        }
        return hash.result();
    });
}
