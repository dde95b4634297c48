// SPDX-License-Identifier: MIT
// settings: typed settings in a property-list file, with defaults and with news of every change.
//
// Commands come from standard input: "get KEY", "set KEY VALUE", "reset KEY", "list", "save".
#include <Bedrock/Bedrock.h>

#include <iostream>
#include <string>

static ZPString *const SettingChanged = "SettingChanged"_zp;

struct Settings : ZPObject {
    ZP_CLASS(Settings)
    ZPRef<ZPString> _path;
    ZPRef<ZPDictionary> _defaults;
    ZPRef<ZPMutableDictionary> _values;

    Settings *initWithPath_defaults(ZPString *path, ZPDictionary *defaults) ZP_ASKS(path, defaults);
    ZPString *stringForKey(ZPString *key) ZP_ASKS(key);
    int intForKey(ZPString *key) { return self()->stringForKey(key)->intValue(); }
    bool boolForKey(ZPString *key) {
        return self()->stringForKey(key)->caseInsensitiveCompare("yes"_zp) == ZPOrderedSame;
    }
    /// Posts SettingChanged, with old and new value, when the value is another. Null goes back to the default.
    void setString_forKey(ZPString *value, ZPString *key) ZP_TELLS(value, key);
    BOOL save() ZP_ASKS();
};

struct SettingsMethods : Settings {
    Settings *initWithPath_defaults(ZPString *path, ZPDictionary *defaults) {
        Settings *self = ZP_SUPER(Settings, init)();
        self->_path = path;
        self->_defaults = defaults;
        self->_values = ZPMutableDictionary::dictionaryWithContentsOfFile(path);  // null without a file
        if (!self->_values) self->_values = ZPMutableDictionary::dictionary();
        return self;
    }
    ZPString *stringForKey(ZPString *key) {
        id value = _values->objectForKey(key);
        if (!value) value = _defaults->objectForKey(key);
        if (!value) ZPException::raise_format(ZPInvalidArgumentException, "there is no setting %@"_zp, key);
        return value;
    }
    void setString_forKey(ZPString *value, ZPString *key) {
        ZPRef<ZPString> old = self()->stringForKey(key);
        if (value) _values->setObject_forKey(value, key);
        else _values->removeObjectForKey(key);
        ZPString *now = self()->stringForKey(key);
        if (old->isEqualToString(now)) return;
        ZPDictionary *change = ZPMakeDictionary({{"key"_zp, key}, {"old"_zp, old}, {"new"_zp, now}});
        ZPNotificationCenter::defaultCenter()->postNotificationName_object_userInfo(SettingChanged, this, change);
    }
    BOOL save() { return _values->writeToFile_atomically(_path, YES); }
};
ZP_IMPLEMENT_WITH(Settings, SettingsMethods, initWithPath_defaults, stringForKey, setString_forKey, save);

/// Something that follows the settings.
struct Window : ZPObject {
    ZP_CLASS(Window)
    void settingChanged(ZPNotification *notification) {
        ZPDictionary *change = notification->userInfo();
        Settings *settings = notification->object();
        std::cout << ZPString::stringWithFormat("%@: %@ -> %@\n"_zp, change->objectForKey("key"_zp),
                                                change->objectForKey("old"_zp), change->objectForKey("new"_zp))
                  << "the window is " << settings->intForKey("width"_zp) << " wide"
                  << (settings->boolForKey("fullscreen"_zp) ? " and fills the screen\n" : "\n");
    }
};
ZP_IMPLEMENT(Window, settingChanged);

int main(int argc, char **argv) {
    ZPAutoreleasePoolScope pool;
    if (argc != 2) return std::cerr << "usage: settings FILE <COMMANDS\n", 2;
    ZPDictionary *defaults = "{width = 640; fullscreen = no; title = \"No name\"; }"_zp->propertyList();
    ZPString *path = ZPMakeString(argv[1]);
    ZPRef<Settings> settings = ZPAdopt(Settings::alloc()->initWithPath_defaults(path, defaults));
    ZPRef<Window> window = ZPAdopt(Window::new_());
    ZPNotificationCenter *center = ZPNotificationCenter::defaultCenter();
    center->addObserver_selector_name_object(window, "settingChanged:"_sel, SettingChanged, settings.get());

    for (std::string line; std::getline(std::cin, line);) {
        ZPAutoreleasePoolScope inner;
        ZPScanner *scanner = ZPScanner::scannerWithString(ZPMakeString(line));
        ZPString *command = nullptr, *key = nullptr, *value = ""_zp;
        ZPCharacterSet *blanks = ZPCharacterSet::whitespaceCharacterSet();
        scanner->scanUpToCharactersFromSet_intoString(blanks, &command);
        scanner->scanUpToCharactersFromSet_intoString(blanks, &key);
        scanner->scanUpToString_intoString("\n"_zp, &value);  // the rest of the line
        try {
            if (!command) continue;
            if (command->isEqual("get"_zp)) std::cout << settings->stringForKey(key) << "\n";
            else if (command->isEqual("set"_zp)) settings->setString_forKey(value, key);
            else if (command->isEqual("reset"_zp)) settings->setString_forKey(nullptr, key);
            else if (command->isEqual("list"_zp)) std::cout << settings->_values->description() << "\n";
            else if (command->isEqual("save"_zp)) std::cout << (settings->save() ? "saved\n" : "not saved\n");
            else std::cout << "unknown command " << command << "\n";
        } catch (ZPException *e) {
            std::cout << e->reason() << "\n";
        }
    }
    center->removeObserver(window);

    ZPRef<Settings> again = ZPAdopt(Settings::alloc()->initWithPath_defaults(path, defaults));
    std::cout << "the file gives the title " << again->stringForKey("title"_zp) << "\n";
}
