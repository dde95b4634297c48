// SPDX-License-Identifier: MIT
// Locales: dictionaries of what differs from language to language, and the keys of their entries.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPDictionary);

extern "C" {
// The value of each key is its own name. Lists of weekdays begin with Sunday; the AM/PM list holds AM, then PM. Formats
// of dates are those of ZPCalendarDate.
/// What begins the fraction of numbers.
ZP_EXPORT extern ZPString *const ZPDecimalSeparator;
/// What separates groups of digits.
ZP_EXPORT extern ZPString *const ZPThousandsSeparator;
/// The sign of money: "$".
ZP_EXPORT extern ZPString *const ZPCurrencySymbol;
/// Its three letters: "USD".
ZP_EXPORT extern ZPString *const ZPInternationalCurrencyString;
/// The format of a time: `%X`.
ZP_EXPORT extern ZPString *const ZPTimeFormatString;
/// The format of a date: `%x`.
ZP_EXPORT extern ZPString *const ZPDateFormatString;
/// The same, short.
ZP_EXPORT extern ZPString *const ZPShortDateFormatString;
/// The format of both: `%c`.
ZP_EXPORT extern ZPString *const ZPTimeDateFormatString;
/// The same, short.
ZP_EXPORT extern ZPString *const ZPShortTimeDateFormatString;
/// A list of the digits, 0 first.
ZP_EXPORT extern ZPString *const ZPDecimalDigits;
/// A list of two: AM, PM.
ZP_EXPORT extern ZPString *const ZPAMPMDesignation;
/// A list of the seven days, Sunday first.
ZP_EXPORT extern ZPString *const ZPWeekDayNameArray;
/// The same, short.
ZP_EXPORT extern ZPString *const ZPShortWeekDayNameArray;
/// A list of the twelve months.
ZP_EXPORT extern ZPString *const ZPMonthNameArray;
/// The same, short.
ZP_EXPORT extern ZPString *const ZPShortMonthNameArray;
/// A list of lists: an hour, and words for it.
ZP_EXPORT extern ZPString *const ZPHourNameDesignations;
/// A list of three words: year, month, week.
ZP_EXPORT extern ZPString *const ZPYearMonthWeekDesignations;
/// A list of words as "last" and "ago".
ZP_EXPORT extern ZPString *const ZPEarlierTimeDesignations;
/// A list of words as "next".
ZP_EXPORT extern ZPString *const ZPLaterTimeDesignations;
/// A list of words as "yesterday".
ZP_EXPORT extern ZPString *const ZPPriorDayDesignations;
/// A list of words as "today".
ZP_EXPORT extern ZPString *const ZPThisDayDesignations;
/// A list of words as "tomorrow".
ZP_EXPORT extern ZPString *const ZPNextDayDesignations;
/// A list of words for the day behind it.
ZP_EXPORT extern ZPString *const ZPNextNextDayDesignations;
/// Which number is which in a date: letters of "MDYH" in their order.
ZP_EXPORT extern ZPString *const ZPDateTimeOrdering;
/// How an amount of money looks.
ZP_EXPORT extern ZPString *const ZPPositiveCurrencyFormatString;
/// How one below 0 looks.
ZP_EXPORT extern ZPString *const ZPNegativeCurrencyFormatString;

/// The English locale, which is built in: made once, kept, borrowed. Any thread.
ZP_EXPORT ZPDictionary *_ZPDefaultEnglishLanguageDict();
}
