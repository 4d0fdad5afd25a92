#pragma once

#include "kivlib/hdr/KIVIStream.h"

#include <cstdint>
#include <string_view>
#include <vector>

/// The object protocol over bytes in memory: headers, load table, versions and numbers.
class ConnectIStream : public KIVIStream {
public:
    KIVObject* read_object(ClassDescriptor* expected) override;
    KIVIStream& operator>>(WritableUCharArray& bytes) override;
    KIVIStream& operator>>(char* text) override;
    KIVIStream& operator>>(float& value) override;
    KIVIStream& operator>>(double& value) override;
    KIVIStream& operator>>(long& value) override;
    KIVIStream& operator>>(int& value) override;
    using KIVIStream::operator>>;

    void add_to_load_table(KIVObject* object) override;
    int inq_version() const override { return version; }
    void set_version(int v) override { version = v; }
    int width() const override { return text_width; }
    void width(int characters) override { text_width = characters; }
    int num_chars_in_buffer() const override;
    void set_error_state(int state) override;

protected:
    /// What is read from now on; the bytes outlive the stream.
    void set_bytes(std::string_view objects, bool has_short_lengths);

    /// The next `n` bytes, or null and an error if the record doesn't hold as many.
    const char* take(std::size_t n)
    {
        return inq_bytes_at_hand() >= n ? std::exchange(at, at + n) : take_too_much();
    }

    std::size_t inq_offset() const { return static_cast<std::size_t>(at - bytes); }
    void set_offset(std::size_t offset);

    /// One class that the stream speaks of: OKAY if it can be read, here or by a module, else the
    /// error that it is, and in `fault` what is wrong with its module if it has one.
    int add_class(const KIVString& name, int stored_version, KIVString& fault);

private:
    struct StoredClass {
        KIVString name;
        ClassDescriptor* descriptor;
        int version;
        mutable const ClassDescriptor* found_to_be = nullptr; // the class last asked for
    };
    class RecordScope;

    bool is_okay() const { return KIVStream::inq_error_state() == OKAY; }
    const char* take_too_much();
    template <class T> T get_number();
    const StoredClass* get_class(unsigned index);
    KIVObject* read_next(const ClassDescriptor* expected);
    KIVObject* read_seen(const ClassDescriptor* expected);
    KIVObject* read_forward(const ClassDescriptor* expected);
    KIVObject* read_arrival();
    KIVObject* read_new(std::uint16_t tag, const ClassDescriptor* expected);
    KIVObject* read_record(const StoredClass& stored, std::uint32_t number, std::size_t length);
    std::size_t read_length(unsigned form);
    bool is_expected(const StoredClass& stored, const ClassDescriptor* expected)
    {
        return !expected || stored.found_to_be == expected || find_to_be(stored, expected);
    }
    bool find_to_be(const StoredClass& stored, const ClassDescriptor* expected);

    const char* bytes = nullptr;    // the first
    std::uint16_t length_forms = 0; // the bits of a tag that tell the form of the length
    std::vector<StoredClass> classes;
    int version = 0;
    int nesting = 0;
    std::uintptr_t stack_floor = 0; // of the thread that reads
    int text_width = 0;
};
