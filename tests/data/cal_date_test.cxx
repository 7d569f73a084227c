// Calendar arithmetic: known day numbers and weekdays, a full round trip over 1600-3000 against
// an independent calendar walk, and the date-button rules with their deliberate differences.
#include "cal_date.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>

namespace {

std::string text(const CalDate& d) {
    char buf[256];
    CalDate::format(d.month, d.day, d.year, buf);
    return buf;
}

TEST(CalDate, KnownDayNumbersAndWeekdays) {
    struct Case {
        int month, day, year, jdn, weekday;
        const char* name;
    } cases[] = {
        {1, 1, 2000, 2451545, 6, "Saturday"}, {5, 23, 2005, 2453514, 1, "Monday"},
        {2, 29, 2004, 2453065, 0, "Sunday"},  {3, 1, 2005, 2453431, 2, "Tuesday"},
        {10, 15, 1582, 2299161, 5, "Friday"}, {11, 21, 2026, 2461366, 6, "Saturday"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(CalDate::dayNumber(c.month, c.day, c.year), c.jdn);
        EXPECT_EQ(CalDate::weekday(c.month, c.day, c.year), c.weekday);
        EXPECT_STREQ(CalDate::weekdayName(c.weekday), c.name);
    }
}

TEST(CalDate, WeekdayNameFallsThroughToSaturday) {
    const char* names[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday"};
    for (int w = 0; w < 6; w++)
        EXPECT_STREQ(CalDate::weekdayName(w), names[w]);
    for (int w : {6, 7, -1, -6, 1000})
        EXPECT_STREQ(CalDate::weekdayName(w), "Saturday") << w;
}

TEST(CalDate, WeekdayOfNegativeDayNumberIsNegativeRemainder) {
    // Year -4800 lies before day number 0: the remainder is taken with its sign.
    int jdn = CalDate::dayNumber(1, 1, -4800);
    ASSERT_LT(jdn, 0);
    EXPECT_EQ(CalDate::weekday(1, 1, -4800), static_cast<int>(jdn + 1.5) % 7);
    EXPECT_LE(CalDate::weekday(1, 1, -4800), 0);
}

TEST(CalDate, RoundTripAgainstIndependentCalendarWalk) {
    const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int jdn = CalDate::dayNumber(1, 1, 1600);
    int checked = 0;
    for (int year = 1600; year <= 3000; year++) {
        bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
        ASSERT_EQ(CalDate::isLeapYear(year), leap) << year;
        for (int month = 1; month <= 12; month++) {
            int length = lengths[month - 1] + (month == 2 && leap ? 1 : 0);
            ASSERT_EQ(CalDate::daysInMonth(month, year), length) << month << "/" << year;
            for (int day = 1; day <= length; day++, jdn++, checked++) {
                ASSERT_EQ(CalDate::dayNumber(month, day, year), jdn);
                int m = 0, d = 0, y = 0;
                CalDate::fromDayNumber(jdn, m, d, y);
                ASSERT_TRUE((CalDate{m, d, y} == CalDate{month, day, year})) << jdn;
            }
        }
    }
    EXPECT_EQ(checked, 511705);
}

TEST(CalDate, LeapYearsAndFebruary) {
    struct Case {
        int year;
        bool leap;
    } cases[] = {{2000, true}, {1900, false}, {2004, true}, {2005, false}, {2100, false},
                 {2400, true}, {0, true},     {-4, true},   {-100, false}, {-400, true}};
    for (const auto& c : cases) {
        EXPECT_EQ(CalDate::isLeapYear(c.year), c.leap) << c.year;
        EXPECT_EQ(CalDate::daysInMonth(2, c.year), c.leap ? 29 : 28) << c.year;
    }
}

TEST(CalDate, MonthOutsideTableNeverLowersTheDay) {
    // Month 0 is the table's filler entry; anything further out counts as 31 days.
    EXPECT_EQ(CalDate::daysInMonth(0, 2005), 0);
    for (int month : {13, 14, -1, -1000, 1 << 30})
        EXPECT_EQ(CalDate::daysInMonth(month, 2005), 31) << month;
    EXPECT_EQ(text(CalDate::clampDay({13, 31, 2005})), "13/31/2005");
    EXPECT_EQ(text(CalDate::clampDay({0, 15, 2005})), "0/0/2005");
}

TEST(CalDate, DateButtonRules) {
    struct Case {
        const char* rule;
        CalDate (*apply)(CalDate, int);
        CalDate from;
        int n;
        const char* expected;
    } cases[] = {
        {"days", CalDate::addDays, {2, 28, 2005}, 1, "3/1/2005"},
        {"days", CalDate::addDays, {12, 31, 2005}, 1, "1/1/2006"},
        {"days", CalDate::addDays, {1, 1, 2006}, -1, "12/31/2005"},
        {"days", CalDate::addDays, {2, 28, 2004}, 1, "2/29/2004"},
        {"days", CalDate::addDays, {3, 1, 2005}, -1, "2/28/2005"},
        {"days", CalDate::addDays, {2, 28, 2005}, 7, "3/7/2005"},
        {"months", CalDate::addMonths, {1, 31, 2005}, 1, "2/28/2005"},
        {"months", CalDate::addMonths, {2, 28, 2005}, 1, "3/28/2005"},
        {"months", CalDate::addMonths, {1, 31, 2004}, 1, "2/29/2004"},
        {"months", CalDate::addMonths, {12, 15, 2005}, 1, "1/15/2006"},
        {"months", CalDate::addMonths, {11, 30, 2005}, 27, "2/29/2008"},
        {"back", CalDate::subtractMonths, {3, 31, 2005}, 1, "2/28/2005"},
        {"back", CalDate::subtractMonths, {1, 15, 2006}, 1, "12/15/2005"},
        {"back", CalDate::subtractMonths, {1, 10, 2005}, 1, "12/10/2004"},
        {"back", CalDate::subtractMonths, {5, 10, 2005}, 12, "5/10/2004"},
        {"back", CalDate::subtractMonths, {5, 10, 2005}, 13, "4/10/2004"},
        {"back", CalDate::subtractMonths, {5, 10, 2005}, 25, "4/10/2003"},
        {"back", CalDate::subtractMonths, {2, 10, 2005}, 24, "2/10/2003"},
        {"years", CalDate::addYears, {2, 29, 2004}, 1, "2/28/2005"},
        {"years", CalDate::addYears, {2, 29, 2004}, -1, "2/28/2003"},
        {"years", CalDate::addYears, {2, 29, 2004}, 4, "2/29/2008"},
        {"years", CalDate::addYears, {6, 1, 3000}, 1, "6/1/3001"},
        {"years", CalDate::addYears, {6, 1, 1980}, -1, "6/1/1979"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(text(c.apply(c.from, c.n)), c.expected)
            << c.rule << " " << text(c.from) << " " << c.n;
}

TEST(CalDate, ExtremeValuesFromDamagedFilesDoNotOverflow) {
    // Run under UBSan these would trap on any signed overflow; the results only need to be
    // deterministic, and the month stays within 1-12 after a carry.
    const int extremes[] = {-2147483647 - 1, -1, 0, 13, 2147483647};
    for (int a : extremes) {
        for (int b : extremes) {
            CalDate d{a, 15, b};
            (void)CalDate::dayNumber(a, b, a);
            (void)CalDate::weekday(a, b, b);
            int m = 0, dd = 0, y = 0;
            CalDate::fromDayNumber(a, m, dd, y);
            (void)CalDate::addDays(d, b);
            EXPECT_LE(CalDate::addMonths(d, 1).month, 12);
            (void)CalDate::subtractMonths(d, 13);
            (void)CalDate::addYears(d, 1);
        }
    }
    EXPECT_EQ(text(CalDate::addMonths({2147483647, 1, 2000}, 1)), "8/1/178958970");
    // Day number 2147483647: its weekday is 2^31 mod 7, not what an overflowing cast gives.
    EXPECT_EQ(CalDate::dayNumber(3, 2145762528, 0), 2147483647);
    EXPECT_EQ(CalDate::weekday(3, 2145762528, 0), 2);
}

TEST(CalDate, ClampDayOnlyLowers) {
    EXPECT_EQ(text(CalDate::clampDay({2, 30, 1900})), "2/28/1900");
    EXPECT_EQ(text(CalDate::clampDay({2, 29, 1900})), "2/28/1900");
    EXPECT_EQ(text(CalDate::clampDay({2, 29, 2000})), "2/29/2000");
    EXPECT_EQ(text(CalDate::clampDay({4, 0, 2005})), "4/0/2005");
    EXPECT_EQ(text(CalDate::clampDay({4, -3, 2005})), "4/-3/2005");
}

TEST(CalDate, FormatHasNoPaddingAndFullYear) {
    EXPECT_EQ(text({1, 2, 2005}), "1/2/2005");
    EXPECT_EQ(text({12, 1, 2005}), "12/1/2005");
    EXPECT_EQ(text({-1, 0, -2147483647 - 1}), "-1/0/-2147483648");
}

TEST(CalDate, TodayIsTheLocalDate) {
    std::time_t before = std::time(nullptr);
    int month = 0, day = 0, year = 0;
    CalDate::today(month, day, year);
    std::tm local{};
    localtime_r(&before, &local);
    // Only a midnight between the two clock reads could tell them apart.
    if (local.tm_mday == day) {
        EXPECT_EQ(month, local.tm_mon + 1);
        EXPECT_EQ(year, local.tm_year + 1900);
    }
    EXPECT_GE(year, 2024);
}

} // namespace
