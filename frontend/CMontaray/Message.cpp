#include "frontend/CMontaray/Message.h"

#include "kivlib/hdr/FileHandle.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace {
using Length = std::uint32_t; // before each field and each message

void append(std::string& bytes, const std::string& text)
{
    const auto length = static_cast<Length>(text.size());
    bytes.append(reinterpret_cast<const char*>(&length), sizeof length);
    bytes += text;
}

/// None unless all of the text is there.
std::optional<std::string> read_text(const std::string& bytes, std::size_t place)
{
    Length length = 0;
    if (bytes.size() < place + sizeof length)
        return std::nullopt;
    std::memcpy(&length, bytes.data() + place, sizeof length);
    if (bytes.size() < place + sizeof length + length)
        return std::nullopt;
    return bytes.substr(place + sizeof length, length);
}
} // namespace

void Message::put(const std::string& text)
{
    append(fields, text);
}

bool Message::send(int pipe) const
{
    std::string bytes;
    append(bytes, fields);
    FileHandle end(::dup(pipe));
    return end.write_all(bytes.data(), bytes.size());
}

std::optional<Message> Message::take_from(std::string& bytes)
{
    const std::optional<std::string> text = read_text(bytes, 0);
    if (!text)
        return std::nullopt;
    bytes.erase(0, sizeof(Length) + text->size());
    Message message;
    message.fields = *text;
    return message;
}

std::string Message::take_text()
{
    const std::string text = read_text(fields, place).value_or("");
    place += sizeof(Length) + text.size();
    return text;
}

long Message::take_number()
{
    return std::strtol(take_text().c_str(), nullptr, 10);
}

namespace {
constexpr double MICROSECONDS = 1e6;
}

void put_event(Message& message, const FrameEvent& event)
{
    const FrameReport& report = event.report;
    for (const long number : {static_cast<long>(event.place), static_cast<long>(report.frame),
                              static_cast<long>(report.outcome), static_cast<long>(report.result),
                              static_cast<long>(report.writer_error),
                              static_cast<long>(event.seconds * MICROSECONDS), event.peak_memory})
        message.put(number);
    message.put(report.file.str());
    message.put(report.unfinished.str());
    message.put(event.said);
    message.put(report.no_images.count());
    for (int i = 0; i < report.no_images.count(); ++i)
        message.put(report.no_images.at_index(i).str());
}

FrameEvent take_event(Message& message)
{
    FrameEvent event;
    FrameReport& report = event.report;
    event.place = static_cast<int>(message.take_number());
    report.frame = static_cast<int>(message.take_number());
    report.outcome = static_cast<FrameReport::Outcome>(message.take_number());
    report.result = static_cast<int>(message.take_number());
    report.writer_error = static_cast<int>(message.take_number());
    event.seconds = static_cast<double>(message.take_number()) / MICROSECONDS;
    event.peak_memory = message.take_number();
    report.file = message.take_text();
    report.unfinished = message.take_text();
    event.said = message.take_text();
    for (long n = message.take_number(); n > 0; --n)
        report.no_images.add_to_end(message.take_text(), false);
    return event;
}
