// SPDX-License-Identifier: MIT
// The locale that stands for every other: English.
#include <Bedrock/platform/kernel/MakeOnce.h>
#include <Bedrock/time/ZPLocale.h>

#include <Bedrock/archiving/ZPPropertyList.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/strings/ZPString.h>

extern "C" {
ZP_STRING_CONSTANT(ZPDecimalSeparator, "ZPDecimalSeparator");
ZP_STRING_CONSTANT(ZPThousandsSeparator, "ZPThousandsSeparator");
ZP_STRING_CONSTANT(ZPCurrencySymbol, "ZPCurrencySymbol");
ZP_STRING_CONSTANT(ZPInternationalCurrencyString, "ZPInternationalCurrencyString");
ZP_STRING_CONSTANT(ZPTimeFormatString, "ZPTimeFormatString");
ZP_STRING_CONSTANT(ZPDateFormatString, "ZPDateFormatString");
ZP_STRING_CONSTANT(ZPShortDateFormatString, "ZPShortDateFormatString");
ZP_STRING_CONSTANT(ZPTimeDateFormatString, "ZPTimeDateFormatString");
ZP_STRING_CONSTANT(ZPShortTimeDateFormatString, "ZPShortTimeDateFormatString");
ZP_STRING_CONSTANT(ZPDecimalDigits, "ZPDecimalDigits");
ZP_STRING_CONSTANT(ZPAMPMDesignation, "ZPAMPMDesignation");
ZP_STRING_CONSTANT(ZPWeekDayNameArray, "ZPWeekDayNameArray");
ZP_STRING_CONSTANT(ZPShortWeekDayNameArray, "ZPShortWeekDayNameArray");
ZP_STRING_CONSTANT(ZPMonthNameArray, "ZPMonthNameArray");
ZP_STRING_CONSTANT(ZPShortMonthNameArray, "ZPShortMonthNameArray");
ZP_STRING_CONSTANT(ZPHourNameDesignations, "ZPHourNameDesignations");
ZP_STRING_CONSTANT(ZPYearMonthWeekDesignations, "ZPYearMonthWeekDesignations");
ZP_STRING_CONSTANT(ZPEarlierTimeDesignations, "ZPEarlierTimeDesignations");
ZP_STRING_CONSTANT(ZPLaterTimeDesignations, "ZPLaterTimeDesignations");
ZP_STRING_CONSTANT(ZPPriorDayDesignations, "ZPPriorDayDesignations");
ZP_STRING_CONSTANT(ZPThisDayDesignations, "ZPThisDayDesignations");
ZP_STRING_CONSTANT(ZPNextDayDesignations, "ZPNextDayDesignations");
ZP_STRING_CONSTANT(ZPNextNextDayDesignations, "ZPNextNextDayDesignations");
ZP_STRING_CONSTANT(ZPDateTimeOrdering, "ZPDateTimeOrdering");
ZP_STRING_CONSTANT(ZPPositiveCurrencyFormatString, "ZPPositiveCurrencyFormatString");
ZP_STRING_CONSTANT(ZPNegativeCurrencyFormatString, "ZPNegativeCurrencyFormatString");
}

ZPDictionary *_ZPDefaultEnglishLanguageDict() {
    static ZPDictionary *english;
    return ZPMakeOnce(english, [] {
        ZPAutoreleasePoolScope pool;
        ZPString *text = R"({
            ZPLanguageName = English; ZPFormalName = "The English Language"; ZPLanguageCode = ENG; ZPParentContext = "";
            ZPDecimalSeparator = "."; ZPThousandsSeparator = ","; ZPCurrencySymbol = "$";
            ZPInternationalCurrencyString = USD;
            ZPTimeFormatString = "%H:%M:%S"; ZPDateFormatString = "%A, %B %d, %Y"; ZPShortDateFormatString = "%d %b %y";
            ZPTimeDateFormatString = "%A, %B %d, %Y %H:%M:%S %Z"; ZPShortTimeDateFormatString = "%d %b %y %I:%M %p";
            ZPDecimalDigits = ("0", "1", "2", "3", "4", "5", "6", "7", "8", "9");
            ZPAMPMDesignation = (AM, PM);
            ZPWeekDayNameArray = (Sunday, Monday, Tuesday, Wednesday, Thursday, Friday, Saturday);
            ZPShortWeekDayNameArray = (Sun, Mon, Tue, Wed, Thu, Fri, Sat);
            ZPMonthNameArray = (January, February, March, April, May, June, July, August, September, October,
                                November, December);
            ZPShortMonthNameArray = (Jan, Feb, Mar, Apr, May, Jun, Jul, Aug, Sep, Oct, Nov, Dec);
            ZPHourNameDesignations = (("0", midnight), ("10", morning), ("12", noon, lunch),
                                      ("14", afternoon), ("19", dinner));
            ZPYearMonthWeekDesignations = (year, month, week);
            ZPEarlierTimeDesignations = (prior, last, past, ago);
            ZPLaterTimeDesignations = (next);
            ZPPriorDayDesignations = (yesterday);
            ZPThisDayDesignations = (today, now);
            ZPNextDayDesignations = (tomorrow);
            ZPNextNextDayDesignations = (nextday);
            ZPDateTimeOrdering = MDYH;
            ZPPositiveCurrencyFormatString = "$9,999.00"; ZPNegativeCurrencyFormatString = "-$9,999.00";
        })"_zp;
        return text->propertyList()->copy().as<ZPDictionary>();
    });
}
