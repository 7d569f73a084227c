// Calendar arithmetic: known day numbers, a round trip over 1600-3000 against an independent
// calendar walk from a known day, the date-button rules, and the absurd dates a damaged file may
// hold.
#include "cal_date.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

std::string text(const CalDate& d) {
    char buf[256];
    CalDate::format(d.month, d.day, d.year, buf);
    return buf;
}

// Before 1600, where the walk below starts, the first Gregorian day; the weekdays' names.
TEST(CalDate, KnownDayNumbersAndWeekdays) {
    EXPECT_EQ(CalDate::dayNumber(10, 15, 1582), 2299161);
    EXPECT_EQ(CalDate::weekday(10, 15, 1582), 5);
    const char* names[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                           "Thursday", "Friday", "Saturday"};
    for (int i = 0; i < 7; i++)
        EXPECT_STREQ(CalDate::weekdayName(i), names[i]);
    EXPECT_STREQ(CalDate::weekdayName(-6), "Saturday");
}

// Day by day from 1 January 1600, day number 2305448, a Saturday (0 is Sunday).
TEST(CalDate, RoundTripAgainstAnIndependentCalendarWalk) {
    const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int jdn = 2305448;
    for (int year = 1600; year <= 3000; year++) {
        bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
        ASSERT_EQ(CalDate::isLeapYear(year), leap) << year;
        for (int month = 1; month <= 12; month++) {
            int length = lengths[month - 1] + (month == 2 && leap ? 1 : 0);
            ASSERT_EQ(CalDate::daysInMonth(month, year), length) << month << "/" << year;
            for (int day = 1; day <= length; day++, jdn++) {
                ASSERT_EQ(CalDate::dayNumber(month, day, year), jdn);
                ASSERT_EQ(CalDate::weekday(month, day, year), (jdn + 1) % 7) << jdn;
                CalDate back{};
                CalDate::fromDayNumber(jdn, back.month, back.day, back.year);
                ASSERT_TRUE((back == CalDate{month, day, year})) << jdn;
            }
        }
    }
}

// clampDay only lowers, and months outside the table never lower the day.
TEST(CalDate, DateButtonRules) {
    const std::tuple<CalDate (*)(CalDate, int), CalDate, int, const char*> cases[] = {
        {CalDate::addDays, {2, 28, 2005}, 1, "3/1/2005"},
        {CalDate::addDays, {1, 1, 2006}, -1, "12/31/2005"},
        {CalDate::addMonths, {1, 31, 2005}, 1, "2/28/2005"},
        {CalDate::addMonths, {1, 31, 2004}, 1, "2/29/2004"},
        {CalDate::addMonths, {11, 30, 2005}, 27, "2/29/2008"},
        {CalDate::subtractMonths, {1, 10, 2005}, 1, "12/10/2004"},
        {CalDate::subtractMonths, {5, 10, 2005}, 12, "5/10/2004"},
        {CalDate::subtractMonths, {2, 10, 2005}, 13, "1/10/2004"},
        {CalDate::subtractMonths, {1, 10, 2005}, 25, "12/10/2002"},
        {CalDate::subtractMonths, {3, 31, 2005}, 1, "2/28/2005"},
        {CalDate::addYears, {2, 29, 2004}, 1, "2/28/2005"},
        {CalDate::addYears, {2, 29, 2004}, 4, "2/29/2008"},
    };
    for (const auto& [rule, from, n, expected] : cases)
        EXPECT_EQ(text(rule(from, n)), expected) << text(from) << " " << n;
    for (auto [from, clamped] : {std::pair<CalDate, const char*>{{2, 30, 1900}, "2/28/1900"},
                                 {{4, -3, 2005}, "4/-3/2005"},
                                 {{13, 31, 2005}, "13/31/2005"},
                                 {{0, 15, 2005}, "0/0/2005"}})
        EXPECT_EQ(text(CalDate::clampDay(from)), clamped);
}

// Under UBSan any signed overflow here would trap; a carried month stays within 1-12.
TEST(CalDate, ExtremeValuesFromDamagedFilesDoNotOverflow) {
    const int extremes[] = {-2147483647 - 1, -1, 0, 13, 2147483647};
    for (int a : extremes) {
        for (int b : extremes) {
            CalDate d{a, 15, b};
            CalDate::fromDayNumber(a, d.month, d.day, d.year);
            (void)CalDate::weekday(a, b, b);
            (void)CalDate::subtractMonths(CalDate::addDays(d, b), 13);
            EXPECT_LE(CalDate::addMonths(CalDate::addYears({a, 15, b}, 1), 1).month, 12);
        }
        // Month 0 is the table's filler; further out there is no entry, and no day is lowered.
        EXPECT_EQ(CalDate::daysInMonth(a, 2005), a == 0 ? 0 : 31) << a;
    }
    // Day number 2^31 - 1: its weekday is 2^31 mod 7, not what an overflowing cast gives.
    EXPECT_EQ(CalDate::weekday(3, 2145762528, 0), 2);
    EXPECT_EQ(text({-1, 0, -2147483647 - 1}), "-1/0/-2147483648");
}

} // namespace
