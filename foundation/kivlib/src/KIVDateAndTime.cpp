#include "kivlib/hdr/KIVDateAndTime.h"

#include "kivlib/hdr/Record.h"

#include <cstdio>
#include <ctime>
#include <sys/stat.h>

KIV_STORED_CLASS(KIVDate, -1);
KIV_STORED_CLASS(KIVDateAndTime, -1);

namespace {
std::tm to_local_time(std::time_t seconds)
{
    constexpr std::time_t MOST = std::time_t{1} << 55; // whose year an int holds
    std::tm parts{};
    seconds = std::clamp(seconds, -MOST, MOST);
    ::localtime_r(&seconds, &parts);
    return parts;
}

template <class... Values> KIVString format(const char* form, Values... values)
{
    char text[64];
    std::snprintf(text, sizeof text, form, values...);
    return text;
}

constexpr const char* MONTHS[] = {"January",   "February", "March",    "April",
                                  "May",       "June",     "July",     "August",
                                  "September", "October",  "November", "December"};
} // namespace

KIVDate::KIVDate() : KIVDate(KIVDateAndTime().inq_date()) {}

KIVDate::KIVDate(int day, int month, int year, int weekday)
    : day(day), month(month), year(year), weekday(weekday)
{}

template <class Record> void KIVDate::record(Record& r)
{
    r.value(day);
    r.value(month);
    r.value(year);
    r.value(weekday);
}

KIV_STORED_RECORD(KIVDate);

KIVString KIVDate::inq_date_string(KIVDate_Format form) const
{
    if (form == KIV_DATE_SHORT)
        return format("%d/%d/%02d", day, month, year % 100);
    if (form == KIV_DATE_LONG && month >= 1 && month <= 12)
        return format("%d %s %d", day, MONTHS[month - 1], year);
    return format("%04d-%02d-%02d", year, month, day);
}

KIVString KIVTime::inq_time_string(KIVTime_Format form) const
{
    switch (form) {
    case KIV_TIME_SHORT:
        return format("%d:%02d", hour, minute);
    case KIV_TIME_SECONDS:
        return format("%d:%02d:%02d", hour, minute, second);
    case KIV_TIME_TWELVE:
        return format("%d:%02d %s", (hour + 11) % 12 + 1, minute, hour < 12 ? "am" : "pm");
    default:
        return format("%02d-%02d-%02d", hour, minute, second);
    }
}

template <class Record> void KIVDateAndTime::record(Record& r)
{
    r.value(seconds);
    r.value(nanoseconds);
}

KIV_STORED_RECORD(KIVDateAndTime);

void KIVDateAndTime::set_to_now()
{
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    seconds = now.tv_sec;
    nanoseconds = static_cast<int>(now.tv_nsec);
}

KIVDate KIVDateAndTime::inq_date() const
{
    const std::tm local = to_local_time(seconds);
    return {local.tm_mday, local.tm_mon + 1, local.tm_year + 1900, local.tm_wday};
}

KIVTime KIVDateAndTime::inq_time() const
{
    const std::tm local = to_local_time(seconds);
    return {local.tm_hour, local.tm_min, local.tm_sec};
}

bool KIVDateAndTime::operator>(const KIVDateAndTime& other) const
{
    return std::pair(seconds, nanoseconds) > std::pair(other.seconds, other.nanoseconds);
}

KIVDateAndTime inq_file_modification_time(const KIVString& file)
{
    struct stat facts {};
    if (::stat(file.c_str(), &facts) != 0)
        return {0, 0};
    return {facts.st_mtim.tv_sec, static_cast<int>(facts.st_mtim.tv_nsec)};
}
