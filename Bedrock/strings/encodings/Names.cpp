// SPDX-License-Identifier: MIT
// The names of the encodings, by way of the library's strings table "EncodingNames".
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/platform/host/Host.h>
#include <Bedrock/platform/kernel/MakeOnce.h>
#include <Bedrock/strings/cluster/Cluster.h>

namespace {

ZPString *displayName(ZPStringEncoding encoding) {
    switch (encoding) {
    case ZPASCIIStringEncoding: return "ASCII"_zp;
    case ZPKESTRELStringEncoding: return "KESTREL"_zp;
    case ZPJapaneseEUCStringEncoding: return "Japanese EUC"_zp;
    case ZPUTF8StringEncoding: return "UTF-8"_zp;
    case ZPISOLatin1StringEncoding: return "ISO Latin-1"_zp;
    case ZPSymbolStringEncoding: return "Symbol"_zp;
    case ZPNonLossyASCIIStringEncoding: return "Non-lossy ASCII"_zp;
    case ZPShiftJISStringEncoding: return "Shift JIS"_zp;
    case ZPISOLatin2StringEncoding: return "ISO Latin-2"_zp;
    case 0:
    case ZPUnicodeStringEncoding: return "Unicode"_zp;
    case ZPWindowsCP1251StringEncoding: return "Adobe Cyrillic"_zp;
    case ZPWindowsCP1252StringEncoding: return "Windows Latin-1"_zp;
    case ZPWindowsCP1253StringEncoding: return "Windows Greek (Code Page 1253)"_zp;
    case ZPWindowsCP1254StringEncoding: return "Windows Turkish (Code Page 1254)"_zp;
    case ZPWindowsCP1250StringEncoding: return "Windows Latin-2 (Code Page 1250)"_zp;
    case ZPISO2022JPStringEncoding: return "JIS (ISO 2022 JP)"_zp;
    default: return nullptr;
    }
}

// The table, owned by the process; empty when the file is missing or is no strings file.
ZPDictionary *readNames() {
    ZPDictionary *table = nullptr;
    if (ZPHostResource file("English.lproj/EncodingNames.strings"); file) {
        ZPString *text =
            ZPString::alloc()->initWithBytes_length_encoding(file.bytes, unsigned(file.length), ZPUTF8StringEncoding);
        try {
            if (text) table = text->propertyListFromStringsFileFormat();
        } catch (ZPException *) {}
        text->release();
    }
    return table ? table->copy().as<ZPDictionary>() : ZPDictionary::new_();
}

struct NameMethods : ZPString {
    static ZPString *localizedNameOfStringEncoding(Class, ZPStringEncoding encoding) {
        static ZPDictionary *names;
        ZPString *key = displayName(encoding);
        if (!key) return ""_zp;
        id name = ZPMakeOnce(names, readNames)->objectForKey(key);
        return name && name->isKindOfClass(ZPString::class_()) ? name.as<ZPString>() : key;
    }
};

}  // namespace

ZP_CATEGORY(ZPString, NameMethods, classMethods(localizedNameOfStringEncoding));
