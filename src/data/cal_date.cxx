// Calendar arithmetic: the Julian Day Number and its inverse (Fliegel and Van Flandern), and
// the month and year rules of the date buttons. All divisions truncate toward zero, as C++'s do.
#include "cal_date.h"

#include <cstdio>
#include <ctime>

const int CalDate::daysBeforeMonth[14] = {0,   0,   31,  59,  90,  120, 151,
                                          181, 212, 243, 273, 304, 334, 365};

int CalDate::dayNumber(int month, int day, int year) {
    if (month <= 2) {
        year = year - 1;
        month = month + 12;
    }
    return day + (153 * month - 457) / 5 + 365 * year + year / 4 - year / 100 + year / 400 +
           1721119;
}

void CalDate::fromDayNumber(int jdn, int& month, int& day, int& year) {
    int l = jdn + 68569;
    int n = (4 * l) / 146097;
    l = l - (146097 * n + 3) / 4;
    int i = (4000 * (l + 1)) / 1461001;
    l = l - (1461 * i) / 4 + 31;
    int j = (80 * l) / 2447;
    day = l - (2447 * j) / 80;
    l = j / 11;
    month = j + 2 - 12 * l;
    year = 100 * (n - 49) + i + l;
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
    return static_cast<int>(jdn + 1.5) % 7;
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

bool CalDate::isLeapYear(int year) {
    bool byFour = (year & 3) == 0;
    bool byHundred = year == (year / 100) * 100;
    bool byFourHundred = year == (year / 400) * 400;
    return (byFour && !byHundred) || byFourHundred;
}

int CalDate::daysInMonth(int month, int year) { return monthLength(daysBeforeMonth, month, year); }

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
    fromDayNumber(dayNumber(date.month, date.day, date.year) + n, result.month, result.day,
                  result.year);
    return result;
}

CalDate CalDate::addMonths(CalDate date, int n) {
    date.month += n;
    while (date.month > 12) {
        date.month -= 12;
        date.year += 1;
    }
    return clampDay(date);
}

CalDate CalDate::subtractMonths(CalDate date, int n) {
    if (n > 12) {
        date.year -= n / 12;
        n -= 12 * (n / 12);
    }
    date.month -= n;
    if (date.month <= 0) {
        date.year -= 1;
        date.month += 12;
    }
    return clampDay(date);
}

CalDate CalDate::addYears(CalDate date, int n) {
    date.year += n;
    return clampDay(date);
}

CalDate CalDate::clampDay(CalDate date) {
    int length = daysInMonth(date.month, date.year);
    if (date.day > length)
        date.day = length;
    return date;
}
