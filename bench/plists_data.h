// One tree of about 1 MB as text: dictionaries of 10 keys nested 4 deep, arrays of strings, data as hex digits.
#pragma once

#include "common.h"

#include <random>
#include <string>

struct DocumentWriter {
    bool json;
    std::mt19937 random{12345};
    std::string out;

    std::string word() {
        static const char *words[] = {"Account", "Balance", "Customer", "Delivery", "Estimate", "Folder", "Group", "History", "Invoice", "Journal"};
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
        DocumentWriter w{json};
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
