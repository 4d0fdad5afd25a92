#pragma once

#include "kivlib/hdr/KIVOStream.h"

#include <cstdio>

/// Text for people: numbers are written in decimal and objects by their dump.
class TextOStream : public KIVOStream {
public:
    void close() override {}
    void flush() override {}
    KIVOStream& put(CharIStream& from, int n) override;
    KIVOStream& put(CharIStream& from) override;
    KIVOStream& put(char c) override;
    KIVOStream& put(const char* from, int n) override;
    int inq_sys_vsn_required_for_restore() const override { return 0; }
    void insert_without_class_hdr(const KIVObject* object) override;
    void insert_with_class_hdr(const KIVObject* object) override;
    KIVOStream& operator<<(const UCharArray& bytes) override;
    KIVOStream& operator<<(const char* text) override;
    KIVOStream& operator<<(float value) override;
    KIVOStream& operator<<(double value) override;
    KIVOStream& operator<<(long value) override;
    KIVOStream& operator<<(int value) override;
    using KIVOStream::operator<<;
    void set_sys_vsn_required_for_restore(int) override {}

protected:
    virtual void write_text(const char* text, std::size_t n) = 0;
};

/// A console of the process.
class ConsoleOStream : public TextOStream {
public:
    explicit ConsoleOStream(std::FILE* file) : file(file) {}

    void flush() override { std::fflush(file); }

protected:
    void write_text(const char* text, std::size_t n) override { std::fwrite(text, 1, n, file); }

private:
    std::FILE* file;
};

/// Text gathered in memory.
class StringOStream : public TextOStream {
public:
    const KIVString& inq_text() const { return text; }

protected:
    void write_text(const char* more, std::size_t n) override
    {
        text += KIVString(std::string_view(more, n));
    }

private:
    KIVString text;
};

/// The consoles for what a program says and for its errors. A program may point them elsewhere.
extern KIVOStream* coutp;
extern KIVOStream* cerrp;
