#pragma once

#include "kivlib/hdr/KIVObject.h"

#include <string>
#include <string_view>
#include <utility>

/// A text of bytes, UTF-8 by convention: a name, a message, a path.
class KIVString : public KIVObject {
public:
    using Base = KIVObject;

    KIVString() = default;
    KIVString(const char* text) : text(text ? text : "") {}

    /// The first `n` characters.
    KIVString(const char* text, int n);
    explicit KIVString(char c) : text(1, c) {}

    /// Decimal text, padded with zeros to `width`; 0 means as long as needed.
    KIVString(int value, int width);
    explicit KIVString(double value);
    KIVString(std::string_view text) : text(text) {}
    KIVString(std::string text) : text(std::move(text)) {}
    explicit KIVString(KIVIStream& stream);

    void storer(KIVOStream& stream) override;
    ClassDescriptor* inq_class_descriptor() const override { return inq_class_descriptor_s(); }
    const char* class_name() const override { return "KIVString"; }
    unsigned long hash() const override;
    bool is_same_as(KIVObject* other) override;
    void dump_on(KIVOStream& stream) const override;
    gsl::owner<KIVObject*> clone() const override;

    static ClassDescriptor* inq_class_descriptor_s();
    static void set_class_descriptor_s(ClassDescriptor* descriptor);
    static KIVReadFunction inq_read_constructor();
    static KIVString* read_from(KIVIStream& stream);

    int length() const { return static_cast<int>(text.size()); }
    bool is_null() const { return text.empty(); }

    /// Valid until the string changes.
    const char* c_str() const { return text.c_str(); }
    const std::string& str() const { return text; }
    operator std::string_view() const { return text; }

    KIVString& operator+=(const KIVString& tail);
    KIVString& operator+=(const char* tail);
    KIVString& operator+=(char tail);

    /// The last component of a path.
    KIVString get_file() const;

    /// All but the last component of a path.
    KIVString get_path() const;

    /// Adds a component with its separator. An absolute `component` replaces the path.
    KIVString& append_path(const KIVString& component);

    /// Replaces the extension of the last component, or adds one; an empty one takes it away.
    void set_extension(const KIVString& extension);

    bool contains(const KIVString& part) const;
    bool contains_no_case(const KIVString& part) const;
    bool is_equal_no_case(const KIVString& other) const;

    friend bool operator==(const KIVString& a, const KIVString& b) { return a.text == b.text; }
    friend bool operator==(const KIVString& a, const char* b) { return a.text == (b ? b : ""); }

private:
    std::string text;
};

KIVString operator+(KIVString head, const KIVString& tail);
KIVString operator+(KIVString head, const char* tail);
KIVString operator+(const char* head, const KIVString& tail);

KIVOStream& operator<<(KIVOStream& stream, const KIVString& text);
KIVIStream& operator>>(KIVIStream& stream, KIVString& text);
