// Calendar arithmetic: the Julian Day Number and its inverse (Fliegel and Van Flandern), and
// the month and year rules of the date buttons. All divisions truncate toward zero, as C++'s do.
// Intermediates are 64-bit so that the absurd dates a damaged file may hold cannot overflow;
// results are brought back to 32 bits, wrapping, and are exact for every real date.
#include "cal_date.h"

#include <cstdio>
#include <ctime>

const int CalDate::daysBeforeMonth[14] = {0,   0,   31,  59,  90,  120, 151,
                                          181, 212, 243, 273, 304, 334, 365};

namespace {
using Wide = long long;

int narrow(Wide value) {
    return static_cast<int>(static_cast<unsigned int>(value));
}
} // namespace

int CalDate::dayNumber(int month, int day, int year) {
    Wide m = month;
    Wide y = year;
    if (m <= 2) {
        y = y - 1;
        m = m + 12;
    }
    return narrow(day + (153 * m - 457) / 5 + 365 * y + y / 4 - y / 100 + y / 400 + 1721119);
}

void CalDate::fromDayNumber(int jdn, int& month, int& day, int& year) {
    Wide l = Wide{jdn} + 68569;
    Wide n = (4 * l) / 146097;
    l = l - (146097 * n + 3) / 4;
    Wide i = (4000 * (l + 1)) / 1461001;
    l = l - (1461 * i) / 4 + 31;
    Wide j = (80 * l) / 2447;
    day = narrow(l - (2447 * j) / 80);
    l = j / 11;
    month = narrow(j + 2 - 12 * l);
    year = narrow(100 * (n - 49) + i + l);
}

void CalDate::today(int& month, int& day, int& year) {
    std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    month = local.tm_mon + 1;
    day = local.tm_mday;
    year = local.tm_year + 1900;
}

int CalDate::weekday(int month, int day, int year) {
    double jdn = dayNumber(month, day, year);
    // Truncated into 64 bits: the largest day number plus 1.5 does not fit an int.
    return static_cast<int>(static_cast<Wide>(jdn + 1.5) % 7);
}

const char* CalDate::weekdayName(int weekday) {
    if (weekday == 0)
        return "Sunday";
    if (weekday == 1)
        return "Monday";
    if (weekday == 2)
        return "Tuesday";
    if (weekday == 3)
        return "Wednesday";
    if (weekday == 4)
        return "Thursday";
    if (weekday == 5)
        return "Friday";
    return "Saturday";
}

bool CalDate::isCalendarDate(int month, int day, int year) {
    return month >= 1 && month <= 12 && year >= 1 && year <= 9999 && day >= 1 &&
           day <= daysInMonth(month, year);
}

bool CalDate::isLeapYear(int year) {
    bool byFour = (year & 3) == 0;
    bool byHundred = year == (year / 100) * 100;
    bool byFourHundred = year == (year / 400) * 400;
    return (byFour && !byHundred) || byFourHundred;
}

int CalDate::daysInMonth(int month, int year) {
    return monthLength(daysBeforeMonth, month, year);
}

int CalDate::monthLength(const int table[14], int month, int year) {
    if (month < 0 || month > 12)
        return 31;
    int days = table[month + 1] - table[month];
    if (month == 2 && isLeapYear(year))
        days++;
    return days;
}

void CalDate::format(int month, int day, int year, char* buf) {
    std::snprintf(buf, 256, "%d/%d/%d", month, day, year);
}

CalDate CalDate::addDays(CalDate date, int n) {
    CalDate result{};
    fromDayNumber(narrow(Wide{dayNumber(date.month, date.day, date.year)} + n), result.month,
                  result.day, result.year);
    return result;
}

// One carry for every 12 months past December: the same as subtracting 12 in a loop.
CalDate CalDate::carryMonths(CalDate date, int n) {
    Wide month = Wide{date.month} + n;
    Wide year = date.year;
    if (month > 12) {
        Wide years = (month - 1) / 12;
        month -= 12 * years;
        year += years;
    }
    return {narrow(month), date.day, narrow(year)};
}

// Whole years only beyond 12 months, then a single borrow: 12 itself is not reduced.
CalDate CalDate::borrowMonths(CalDate date, int n) {
    Wide year = date.year;
    if (n > 12) {
        year -= n / 12;
        n -= 12 * (n / 12);
    }
    Wide month = Wide{date.month} - n;
    if (month <= 0) {
        year -= 1;
        month += 12;
    }
    return {narrow(month), date.day, narrow(year)};
}

CalDate CalDate::shiftYears(CalDate date, int n) {
    date.year = narrow(Wide{date.year} + n);
    return date;
}

CalDate CalDate::addMonths(CalDate date, int n) {
    return clampDay(carryMonths(date, n));
}

CalDate CalDate::subtractMonths(CalDate date, int n) {
    return clampDay(borrowMonths(date, n));
}

CalDate CalDate::addYears(CalDate date, int n) {
    return clampDay(shiftYears(date, n));
}

CalDate CalDate::clampDay(CalDate date) {
    int length = daysInMonth(date.month, date.year);
    if (date.day > length)
        date.day = length;
    return date;
}
