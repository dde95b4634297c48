// SPDX-License-Identifier: MIT
// Two trees of about 1 MB, each in two notations: a wide one, of many small records with long strings, and a deep
// one, of dictionaries of 10 keys nested 4 deep, arrays of strings, and data as hex digits.
#pragma once

#include <random>
#include <string>

enum class Notation { propertyList, json };
enum class Tree { wide, deep };

inline std::string makeWideDocument(Notation notation) {
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
        t += close + std::string(next) + key("place") + "{" + key("city") + value(word(5, 12, false)) + next +
             key("region") + value(word(8, 20, true)) + end + "}" + end + "}";
        t += json ? (i == 3199 ? "\n" : ",\n") : ";\n";
    }
    return t + "}";
}

struct DeepDocument {
    bool json;
    std::mt19937 random{12345};
    std::string out;

    std::string word() {
        static const char *words[] = {"Account", "Balance", "Customer", "Delivery", "Estimate",
                                      "Folder",  "Group",   "History",  "Invoice",  "Journal"};
        const char *w = words[random() % 10];
        return w + std::to_string(random() % 1000);
    }
    void quoted(const std::string &s) { out += '"' + s + '"'; }
    void dictionary(int depth) {
        out += '{';
        for (int k = 0; k < 10; ++k) {
            if (k && json) out += ',';
            std::string key = char('a' + k) + word();
            if (json) quoted(key), out += ':';
            else out += key + " = ";
            if (k < 5 && depth < 4) dictionary(depth + 1);
            else if (k == 5) out += std::to_string(random() % 1000000);
            else if (k == 6) {
                out += std::to_string(random() % 100000) + ".";
                out += std::to_string(100 + random() % 900);
            } else if (k == 7) {
                out += json ? '"' : '<';
                for (int i = 0; i < 128; ++i) out += "0123456789abcdef"[random() % 16];
                out += json ? '"' : '>';
            } else if (k == 8) out += json ? (random() % 2 ? "true" : "false") : (random() % 2 ? "YES" : "NO");
            else if (k == 9) {
                out += json ? '[' : '(';
                for (int i = 0; i < 10; ++i) {
                    if (i) out += json ? "," : ", ";
                    std::string a = word(), b = word();
                    // The text form writes what is not ASCII as an escape.
                    quoted(a + " and " + b + (json ? " \\\"quoted\\\" caf\xc3\xa9" : " \\\"quoted\\\" caf\\351"));
                }
                out += json ? ']' : ')';
            } else {
                std::string a = word(), b = word();
                quoted(a + ' ' + b + ' ' + word());
            }
            if (!json) out += "; ";
        }
        out += '}';
    }
    static std::string text(bool json) {
        DeepDocument w{json};
        w.out = '{';
        for (int i = 0; i < 7; ++i) {
            if (json) w.out += (i ? ",\"top" : "\"top") + std::to_string(i) + "\":";
            else w.out += "top" + std::to_string(i) + " = ";
            w.dictionary(1);
            if (!json) w.out += "; ";
        }
        return w.out + "}";
    }
};

inline std::string makeDocument(Tree tree, Notation notation) {
    return tree == Tree::wide ? makeWideDocument(notation) : DeepDocument::text(notation == Notation::json);
}
inline int topLevelCount(Tree tree) { return tree == Tree::wide ? 3200 : 7; }

#define BOTH_TREES(benchmark)                       \
    BENCHMARK_CAPTURE(benchmark, wide, Tree::wide); \
    BENCHMARK_CAPTURE(benchmark, deep, Tree::deep)
