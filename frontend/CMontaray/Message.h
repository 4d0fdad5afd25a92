#pragma once

#include "frontend/CMontaray/RunListener.h"

#include <optional>

/// What a rendering process tells the one that started it: fields that may hold any bytes.
class Message {
public:
    void put(long number) { put(std::to_string(number)); }
    void put(const std::string& text);

    /// False if nobody reads the pipe.
    bool send(int pipe) const;

    /// Takes the first message off the bytes that came, as soon as it is whole.
    static std::optional<Message> take_from(std::string& bytes);

    long take_number();
    std::string take_text();

private:
    std::string fields;
    std::size_t place = 0; // of the next field
};

void put_event(Message& message, const FrameEvent& event);
FrameEvent take_event(Message& message);
