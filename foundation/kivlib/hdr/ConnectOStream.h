#pragma once

#include "kivlib/hdr/ByteBuffer.h"
#include "kivlib/hdr/KIVOStream.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

class ClassDescriptor;
class StoreTable;

/// The object protocol into memory: headers, references, versions and numbers.
class ConnectOStream : public KIVOStream {
public:
    ConnectOStream();
    ~ConnectOStream() override;

    int inq_sys_vsn_required_for_restore() const override { return required_version; }
    void insert_without_class_hdr(const KIVObject* object) override;
    void insert_with_class_hdr(const KIVObject* object) override;
    KIVOStream& operator<<(const UCharArray& bytes) override;
    KIVOStream& operator<<(const char* text) override;
    KIVOStream& operator<<(float value) override;
    KIVOStream& operator<<(double value) override;
    KIVOStream& operator<<(long value) override;
    KIVOStream& operator<<(int value) override;
    using KIVOStream::operator<<;
    void set_sys_vsn_required_for_restore(int version) override { required_version = version; }

    /// A record told field by field, as another release may have written it: class header, the
    /// fields by the operators above, then `end_record` with what this gave.
    std::size_t begin_record(const KIVString& class_name, int version);
    void end_record(std::size_t start);

    /// A reference to the `number`-th object of the stream, counted from 0.
    void put_seen(std::uint32_t number);

protected:
    struct StoredClass {
        KIVString name;
        int version;
        std::uint16_t length_form = 0; // of its next record, a LengthForm
        bool has_records = false;
        unsigned open_records = 0; // begun, not ended
    };

    /// Valid until more is written.
    std::string_view inq_payload() const { return {payload.data(), inq_size()}; }
    std::size_t inq_size() const { return static_cast<std::size_t>(at - payload.data()); }
    const std::vector<StoredClass>& inq_classes() const { return classes; }
    void put_bytes(const void* from, std::size_t n);

private:
    template <class T> void put_number(T value) { put_bytes(&value, sizeof value); }

    /// Room for `n` bytes at the end, which are counted as written; null without memory.
    char* extend(std::size_t n)
    {
        const bool fits = static_cast<std::size_t>(room_end - at) >= n || make_room(n);
        return fits ? std::exchange(at, at + n) : nullptr;
    }
    bool make_room(std::size_t n);
    unsigned intern(const ClassDescriptor* descriptor);
    unsigned intern(const KIVString& name, int version);
    void put_new(const KIVObject* object);
    void put_forward(const KIVObject* object);
    void put_arrival(const KIVObject* object, std::uint32_t number);
    void put_awaited();
    bool can_nest();
    void end_new(std::size_t tag_at, unsigned class_index, std::uint16_t guess);
    void widen_length(std::size_t length_at, std::size_t by);
    std::size_t begin_length();

    ByteBuffer payload; // its size is kept in `at`
    std::vector<StoredClass> classes;
    std::unordered_map<const ClassDescriptor*, unsigned> class_indices;
    std::unique_ptr<StoreTable> table;
    std::deque<const KIVObject*> forwards;        // announced, in this order
    std::unordered_set<const KIVObject*> awaited; // those of them that are not written yet
    int required_version;
    int nesting = 0;
    std::uintptr_t stack_floor = 0; // of the thread that writes
};
