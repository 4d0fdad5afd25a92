#pragma once

#include "kivlib/hdr/StoredClass.h"

enum KIVDate_Format {
    KIV_DATE_FILE_NAME = 0, // 2026-03-09
    KIV_DATE_SHORT = 1,     // 9/3/26
    KIV_DATE_LONG = 2       // 9 March 2026
};

enum KIVTime_Format {
    KIV_TIME_SHORT = 0,    // 9:05
    KIV_TIME_SECONDS = 1,  // 9:05:02
    KIV_TIME_TWELVE = 2,   // 9:05 am
    KIV_TIME_FILE_NAME = 3 // 09-05-02
};

/// A day of the calendar, or none: all zeros.
class KIVDate : public KIVObject {
    KIV_STORED(KIVDate, KIVObject);

public:
    /// Today.
    KIVDate();

    /// `weekday` counts from Sunday, 0.
    KIVDate(int day, int month, int year, int weekday);
    explicit KIVDate(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    int inq_day() const { return day; }
    int inq_month() const { return month; }
    int inq_year() const { return year; }
    KIVString inq_date_string(KIVDate_Format format) const;

    bool operator==(const KIVDate& other) const
    {
        return day == other.day && month == other.month && year == other.year;
    }

private:
    template <class Record> void record(Record& r);

    int day, month, year, weekday;
};

/// A time of day in hours (0 to 23), minutes and seconds.
class KIVTime {
public:
    KIVTime(int hour, int minute, int second) : hour(hour), minute(minute), second(second) {}

    KIVString inq_time_string(KIVTime_Format format) const;

private:
    int hour, minute, second;
};

/// A moment. Dates and times of day are those of the local time zone.
class KIVDateAndTime : public KIVObject {
    KIV_STORED(KIVDateAndTime, KIVObject);

public:
    /// Now.
    KIVDateAndTime() { set_to_now(); }

    /// Counted from the start of 1970, UTC.
    KIVDateAndTime(long seconds, int nanoseconds) : seconds(seconds), nanoseconds(nanoseconds) {}
    explicit KIVDateAndTime(KIVIStream& stream);

    void storer(KIVOStream& stream) override;

    void set_to_now();
    KIVDate inq_date() const;
    KIVTime inq_time() const;

    /// Later than.
    bool operator>(const KIVDateAndTime& other) const;

private:
    template <class Record> void record(Record& r);

    long seconds;
    int nanoseconds;
};

/// The start of 1970 if the file has no such time.
KIVDateAndTime inq_file_modification_time(const KIVString& file);
