// SPDX-License-Identifier: MIT
// logwatch: what a server's log says by the hour: requests, failures, and the gaps in which nothing came.
//
// A line is "[03/Feb/2024:04:05:06 +0100] METHOD PATH STATUS"; the hours are those of the line's own zone.
#include <Bedrock/Bedrock.h>

#include <cstdlib>
#include <iostream>
#include <string_view>

struct Entry : ZPObject {
    ZP_CLASS(Entry)
    ZPRef<ZPCalendarDate> _date;
    ZPRef<ZPString> _path;
    int _status = 0;

    /// Null when the line has another form.
    static Entry *entryWithLine(ZPString *line) {
        ZPScanner *scanner = ZPScanner::scannerWithString(line);
        ZPString *stamp, *method, *path;
        int status;
        ZPCharacterSet *blanks = ZPCharacterSet::whitespaceCharacterSet();
        bool fits = scanner->scanString_intoString("["_zp, nullptr) &&
                    scanner->scanUpToString_intoString("]"_zp, &stamp) &&
                    scanner->scanString_intoString("]"_zp, nullptr) &&
                    scanner->scanUpToCharactersFromSet_intoString(blanks, &method) &&
                    scanner->scanUpToCharactersFromSet_intoString(blanks, &path) && scanner->scanInt(&status);
        if (!fits) return nullptr;
        ZPCalendarDate *date = ZPCalendarDate::dateWithString_calendarFormat(stamp, "%d/%b/%Y:%H:%M:%S %z"_zp);
        if (!date) return nullptr;
        ZPRef<Entry> entry = ZPAdopt(Entry::new_());
        entry->_date = date;
        entry->_path = path;
        entry->_status = status;
        return std::move(entry).autoreleased();
    }
    /// What groups are named by; sorts as the time does.
    ZPString *hour() { return _date->descriptionWithCalendarFormat("%Y-%m-%d %H:00"_zp); }
    int compare(Entry *other) { return _date->compare(other->_date); }
};
ZP_IMPLEMENT(Entry, hour, compare);

int main(int argc, char **argv) {
    ZPAutoreleasePoolScope pool;
    double gap = 3600;
    ZPString *path = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (std::string_view(argv[i]) == "--gap" && i + 1 < argc) gap = 60 * std::atof(argv[++i]);
        else path = ZPMakeString(argv[i]);
    }
    if (!path) return std::cerr << "usage: logwatch [--gap MINUTES] FILE\n", 2;
    ZPString *log = ZPString::stringWithContentsOfFile(path);
    if (!log) return std::cerr << "logwatch: " << path << " cannot be read\n", 1;

    ZPMutableArray *entries = ZPMutableArray::array();
    unsigned strange = 0;
    for (ZPString *line : log->componentsSeparatedByString("\n"_zp)) {
        if (line->length() == 0) continue;
        if (Entry *entry = Entry::entryWithLine(line)) entries->addObject(entry);
        else ++strange;
    }
    entries->sortUsingSelector("compare:"_sel);  // logs of several processes interleave

    ZPMutableDictionary *byHour = ZPMutableDictionary::dictionary();
    for (Entry *entry : entries) {
        ZPMutableArray *group = byHour->objectForKey(entry->hour());
        if (!group) byHour->setObject_forKey(group = ZPMutableArray::array(), entry->hour());
        group->addObject(entry);
    }
    for (ZPString *hour : byHour->allKeys()->sortedArrayUsingSelector("compare:"_sel)) {
        ZPArray *group = byHour->objectForKey(hour);
        unsigned failures = 0;
        ZPCountedSet *paths = ZPCountedSet::set();
        for (Entry *entry : group) {
            failures += entry->_status >= 500;
            paths->addObject(entry->_path);
        }
        ZPString *favourite = nullptr;
        for (ZPString *p : paths->allObjects()->sortedArrayUsingSelector("compare:"_sel))
            if (!favourite || paths->countForObject(p) > paths->countForObject(favourite)) favourite = p;
        std::cout << ZPString::stringWithFormat("%@  %3u requests  %2u failed  mostly %@\n"_zp, hour, group->count(),
                                                failures, favourite);
    }

    Entry *before = nullptr;
    for (Entry *entry : entries) {
        if (before && entry->_date->timeIntervalSinceDate(before->_date) > gap) {
            int days, hours, minutes;
            entry->_date->years_months_days_hours_minutes_seconds_sinceDate(nullptr, nullptr, &days, &hours, &minutes,
                                                                            nullptr, before->_date);
            std::cout << ZPString::stringWithFormat("nothing for %dd %02dh %02dm after %@\n"_zp, days, hours, minutes,
                                                    before->_date.get());
        }
        before = entry;
    }
    if (strange) std::cout << strange << " lines of another form\n";
}
