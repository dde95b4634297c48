// One tree of about 1 MB in two notations: records of strings, nested dictionaries and arrays.
#pragma once

#include <random>
#include <string>

enum class Notation { propertyList, json };

inline std::string makeDocument(Notation notation) {
    bool json = notation == Notation::json;
    std::mt19937 random(12345);
    auto word = [&](int shortest, int longest, bool spaces) {
        std::string s;
        int n = shortest + int(random() % unsigned(longest - shortest + 1));
        for (int i = 0; i < n; ++i) s += spaces && i % 7 == 6 ? ' ' : char('a' + random() % 26);
        return s;
    };
    auto key = [&](const char *k) { return json ? "\"" + std::string(k) + "\": " : std::string(k) + " = "; };
    auto value = [&](const std::string &s) { return json || s.find(' ') != s.npos ? "\"" + s + "\"" : s; };
    const char *open = json ? "[" : "(", *close = json ? "]" : ")", *next = json ? ", " : "; ", *end = json ? "" : "; ";
    std::string t = "{\n";
    for (int i = 0; i < 3200; ++i) {
        t += json ? "\"record" + std::to_string(i) + "\": {" : "record" + std::to_string(i) + " = {";
        t += key("name") + value(word(10, 30, true)) + next;
        t += key("code") + value(word(4, 8, false)) + next;
        t += key("summary") + value(word(60, 140, true)) + next;
        t += key("tags") + open;
        int tags = 2 + int(random() % 5);
        for (int k = 0; k < tags; ++k) t += (k ? ", " : "") + value(word(3, 9, false));
        t += close + std::string(next) + key("place") + "{" + key("city") + value(word(5, 12, false)) + next + key("region") + value(word(8, 20, true)) + end + "}" + end + "}";
        t += json ? (i == 3199 ? "\n" : ",\n") : ";\n";
    }
    return t + "}";
}
