// SPDX-License-Identifier: MIT
// The texts that the benchmarks of encodings convert: 1 MiB each, always the same.
#pragma once

#include <string>

inline std::string repeated(const char *const *parts, unsigned count, std::size_t size) {
    std::string text;
    for (unsigned i = 1; text.size() < size; i = i * 1664525 + 1013904223) text += parts[(i >> 16) % count];
    return text;
}
constexpr std::size_t textBytes = 1 << 20;

/// UTF-8: mostly English, with accents, Greek, Cyrillic, kanji and a few signs of two units.
inline const std::string &mixedText() {
    static const char *const parts[] = {"The report for the third quarter is ready. ",
                                        "Größe und Maß überprüfen. ",
                                        "Καλημέρα κόσμε. ",
                                        "Съешь же ещё этих мягких булок. ",
                                        "日本語の文字列です。",
                                        "voilà, ça marche déjà! ",
                                        "done 🎉🚀 ",
                                        "Please check the attached file before Monday. "};
    static const std::string text = repeated(parts, 8, textBytes);
    return text;
}
inline const std::string &asciiText() {
    static const char *const parts[] = {"the quick brown fox jumps over the lazy dog and then rests near a river "};
    static const std::string text = repeated(parts, 1, textBytes);
    return text;
}
/// UTF-8 of what Latin-1 and Windows-1252 hold, mostly ASCII.
inline const std::string &westernText() {
    static const char *const parts[] = {"The report for the third quarter is ready, and so is the next one. ",
                                        "Größe und Maß überprüfen. ", "voilà, ça marche déjà! ",
                                        "Please check the attached file before Monday. "};
    static const std::string text = repeated(parts, 4, textBytes);
    return text;
}
/// UTF-8 of what Windows-1251 holds, mostly not ASCII.
inline const std::string &cyrillicText() {
    static const char *const parts[] = {"Съешь же ещё этих мягких французских булок, да выпей чаю. ", "Отчёт готов. ",
                                        "В чащах юга жил бы цитрус? "};
    static const std::string text = repeated(parts, 3, textBytes);
    return text;
}
/// UTF-8 of what JIS X 0208 holds, with some ASCII.
inline const std::string &japaneseText() {
    static const char *const parts[] = {"日本語の文字列です。", "吾輩は猫である。名前はまだ無い。\n", "The report, ",
                                        "カタカナとひらがな、", "東京都千代田区 1-1 "};
    static const std::string text = repeated(parts, 5, textBytes);
    return text;
}
