// Calendar arithmetic on month/day/year triples: day numbers, weekdays, leap years and the
// rules behind the entry dialog's date buttons. Pure functions; only isCalendarDate validates a
// date.
#ifndef PINDLE_CAL_DATE_H
#define PINDLE_CAL_DATE_H

struct CalDate {
    int month;
    int day;
    int year;

    // Julian Day Number in the proleptic Gregorian calendar (1/1/2000 is 2451545).
    static int dayNumber(int month, int day, int year);
    static void fromDayNumber(int jdn, int& month, int& day, int& year);
    static void today(int& month, int& day, int& year);

    // 0 is Sunday. Computed through a double, so a negative day number gives a negative result.
    static int weekday(int month, int day, int year);
    // Anything outside 0-5 is "Saturday", negative remainders included.
    static const char* weekdayName(int weekday);

    // A day the calendar has, in a year of 1-9999: what a damaged file or another program's
    // date may not be, and what the companions' date formats can write.
    static bool isCalendarDate(int month, int day, int year);
    static bool isLeapYear(int year);
    static int daysInMonth(int month, int year);
    // The same from a caller's own copy of the 14-entry table. A month outside 0-12 (only a
    // damaged file holds one) has no entry; it counts as 31 days so no day is lowered.
    static int monthLength(const int table[14], int month, int year);
    // "%d/%d/%d" into a buffer of at least 256 characters.
    static void format(int month, int day, int year, char* buf);

    static CalDate addDays(CalDate date, int n);
    // The month moved on with whole years carried, as subtracting 12 in a loop would; back
    // with whole years taken only beyond 12 months, then one borrow; the year moved. These
    // three leave the day as it is.
    static CalDate carryMonths(CalDate date, int n);
    static CalDate borrowMonths(CalDate date, int n);
    static CalDate shiftYears(CalDate date, int n);
    // The same, then clampDay.
    static CalDate addMonths(CalDate date, int n);
    static CalDate subtractMonths(CalDate date, int n);
    static CalDate addYears(CalDate date, int n);
    // Lowers a day past the month's end; a day of 0 or below is left alone.
    static CalDate clampDay(CalDate date);

    // Days in a common year before the first of each month, indexed by the 1-based month,
    // with the year's total as a trailing entry.
    static const int daysBeforeMonth[14];
};

inline bool operator==(const CalDate& a, const CalDate& b) {
    return a.month == b.month && a.day == b.day && a.year == b.year;
}

#endif
