// SPDX-License-Identifier: MIT
// Locales: dictionaries of what differs from language to language, and the keys of their entries.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPDictionary);

extern "C" {
// The value of each key is its own name. Lists of weekdays begin with Sunday; the AM/PM list holds AM, then PM. Formats
// of dates are those of ZPCalendarDate.
ZP_EXPORT extern ZPString *const ZPDecimalSeparator;
ZP_EXPORT extern ZPString *const ZPThousandsSeparator;
ZP_EXPORT extern ZPString *const ZPCurrencySymbol;
ZP_EXPORT extern ZPString *const ZPInternationalCurrencyString;
ZP_EXPORT extern ZPString *const ZPTimeFormatString;
ZP_EXPORT extern ZPString *const ZPDateFormatString;
ZP_EXPORT extern ZPString *const ZPShortDateFormatString;
ZP_EXPORT extern ZPString *const ZPTimeDateFormatString;
ZP_EXPORT extern ZPString *const ZPShortTimeDateFormatString;
ZP_EXPORT extern ZPString *const ZPDecimalDigits;
ZP_EXPORT extern ZPString *const ZPAMPMDesignation;
ZP_EXPORT extern ZPString *const ZPWeekDayNameArray;
ZP_EXPORT extern ZPString *const ZPShortWeekDayNameArray;
ZP_EXPORT extern ZPString *const ZPMonthNameArray;
ZP_EXPORT extern ZPString *const ZPShortMonthNameArray;
ZP_EXPORT extern ZPString *const ZPHourNameDesignations;
ZP_EXPORT extern ZPString *const ZPYearMonthWeekDesignations;
ZP_EXPORT extern ZPString *const ZPEarlierTimeDesignations;
ZP_EXPORT extern ZPString *const ZPLaterTimeDesignations;
ZP_EXPORT extern ZPString *const ZPPriorDayDesignations;
ZP_EXPORT extern ZPString *const ZPThisDayDesignations;
ZP_EXPORT extern ZPString *const ZPNextDayDesignations;
ZP_EXPORT extern ZPString *const ZPNextNextDayDesignations;
ZP_EXPORT extern ZPString *const ZPDateTimeOrdering;
ZP_EXPORT extern ZPString *const ZPPositiveCurrencyFormatString;
ZP_EXPORT extern ZPString *const ZPNegativeCurrencyFormatString;

/// The English locale, which is built in: made once, kept. Any thread.
ZP_EXPORT ZPDictionary *_ZPDefaultEnglishLanguageDict();
}
