// SPDX-License-Identifier: MIT
#include <Bedrock/time/ZPLocale.h>

#include <Bedrock/archiving/ZPPropertyList.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/strings/ZPString.h>

extern "C" {
#define KEY(name) ZPString *const name = #name##_zp
KEY(ZPDecimalSeparator);
KEY(ZPThousandsSeparator);
KEY(ZPCurrencySymbol);
KEY(ZPInternationalCurrencyString);
KEY(ZPTimeFormatString);
KEY(ZPDateFormatString);
KEY(ZPShortDateFormatString);
KEY(ZPTimeDateFormatString);
KEY(ZPShortTimeDateFormatString);
KEY(ZPDecimalDigits);
KEY(ZPAMPMDesignation);
KEY(ZPWeekDayNameArray);
KEY(ZPShortWeekDayNameArray);
KEY(ZPMonthNameArray);
KEY(ZPShortMonthNameArray);
KEY(ZPHourNameDesignations);
KEY(ZPYearMonthWeekDesignations);
KEY(ZPEarlierTimeDesignations);
KEY(ZPLaterTimeDesignations);
KEY(ZPPriorDayDesignations);
KEY(ZPThisDayDesignations);
KEY(ZPNextDayDesignations);
KEY(ZPNextNextDayDesignations);
KEY(ZPDateTimeOrdering);
KEY(ZPPositiveCurrencyFormatString);
KEY(ZPNegativeCurrencyFormatString);
#undef KEY
}

ZPDictionary *_ZPDefaultEnglishLanguageDict() {
    static ZPDictionary *const english = [] {
        ZPAutoreleasePoolScope pool;
        ZPString *text = R"({
            ZPLanguageName = English; ZPFormalName = "The English Language"; ZPLanguageCode = ENG; ZPParentContext = "";
            ZPDecimalSeparator = "."; ZPThousandsSeparator = ","; ZPCurrencySymbol = "$"; ZPInternationalCurrencyString = USD;
            ZPTimeFormatString = "%H:%M:%S"; ZPDateFormatString = "%A, %B %d, %Y"; ZPShortDateFormatString = "%d %b %y";
            ZPTimeDateFormatString = "%A, %B %d, %Y %H:%M:%S %Z"; ZPShortTimeDateFormatString = "%d %b %y %I:%M %p";
            ZPDecimalDigits = ("0", "1", "2", "3", "4", "5", "6", "7", "8", "9");
            ZPAMPMDesignation = (AM, PM);
            ZPWeekDayNameArray = (Sunday, Monday, Tuesday, Wednesday, Thursday, Friday, Saturday);
            ZPShortWeekDayNameArray = (Sun, Mon, Tue, Wed, Thu, Fri, Sat);
            ZPMonthNameArray = (January, February, March, April, May, June, July, August, September, October, November, December);
            ZPShortMonthNameArray = (Jan, Feb, Mar, Apr, May, Jun, Jul, Aug, Sep, Oct, Nov, Dec);
            ZPHourNameDesignations = (("0", midnight), ("10", morning), ("12", noon, lunch), ("14", afternoon), ("19", dinner));
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
        return (ZPDictionary *)text->propertyList()->copy().pointer();
    }();
    return english;
}
