#pragma once

#include "kivlib/hdr/KIVIStream.h"

#include <cstdint>
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

protected:
    /// What is read from now on; `bytes` outlive the stream.
    void set_bytes(const char* bytes, std::size_t size);

    /// The next `n` bytes, or null and an error if the record doesn't hold as many.
    const char* take(std::size_t n);

    std::size_t inq_offset() const { return pos; }
    void set_offset(std::size_t offset);

    /// One class that the stream speaks of: OKAY if it can be read, here or by a module, else the
    /// error that it is.
    int add_class(const KIVString& name, int stored_version);

private:
    struct StoredClass {
        KIVString name;
        ClassDescriptor* descriptor;
        int version;
    };
    class RecordScope;

    template <class T> T get_number();
    const StoredClass* get_class(unsigned index);
    KIVObject* read_next(const ClassDescriptor* expected);
    KIVObject* read_seen(const ClassDescriptor* expected);
    KIVObject* read_forward(const ClassDescriptor* expected);
    KIVObject* read_arrival();
    KIVObject* read_new(unsigned class_index, const ClassDescriptor* expected);
    KIVObject* read_record(const StoredClass& stored, std::uint32_t number);
    bool is_expected(const ClassDescriptor* actual, const ClassDescriptor* expected);

    const char* bytes = nullptr;
    std::size_t pos = 0;
    std::size_t record_end = 0;
    std::vector<StoredClass> classes;
    int version = 0;
    int nesting = 0;
    int text_width = 0;
};
