#pragma once

#include "kivlib/hdr/KIVOStream.h"
#include "kivlib/hdr/Record.h"
#include "xsheet/store_control/hdr/XSheetStoreController.h"

#include <memory>

/// For a destructor, from which nothing may be thrown.
inline void close_safely(XSheetStoreController& store, gsl::owner<KIVStream*> stream) noexcept
{
    try {
        if (stream)
            store.close_stream(stream);
    } catch (...) {
        store.set_failed();
    }
}

/// The object that a stream is there for, with all that it claims for itself once everything is
/// read. Null, and an error of the stream, without one.
template <class Class> std::unique_ptr<Class> read_part(KIVIStream& stream)
{
    std::unique_ptr<Class> object;
    RecordReader(stream).owned(object);
    if (!object)
        stream.set_error_state(KIVStream::BAD_DATA);
    else if constexpr (requires { object->claim_rest(stream); })
        object->claim_rest(stream);
    return object;
}

/// A file of the open folder for as long as it is read. Without a stream if anything has failed.
class LoadFile {
public:
    LoadFile(XSheetStoreController& store, const KIVString& name)
        : store(store), stream(store.is_okay() ? store.open_load_file(name) : nullptr)
    {}
    LoadFile(const LoadFile&) = delete;
    LoadFile& operator=(const LoadFile&) = delete;
    ~LoadFile() { close_safely(store, stream); }

    /// Null if anything has failed.
    KIVIStream* inq_stream() const { return stream; }

    /// The object in the file, or null if anything has failed. A file without one is a failure.
    template <class Class> std::unique_ptr<Class> read()
    {
        return stream && store.is_okay() ? read_part<Class>(*stream) : nullptr;
    }

private:
    XSheetStoreController& store;
    gsl::owner<KIVIStream*> stream;
};

/// A file of the open folder for as long as it is written. Without a stream if anything has failed.
class SaveFile {
public:
    SaveFile(XSheetStoreController& store, const KIVString& name)
        : store(store), stream(store.is_okay() ? store.open_save_file(name) : nullptr)
    {}
    SaveFile(const SaveFile&) = delete;
    SaveFile& operator=(const SaveFile&) = delete;

    /// A file that was not finished is a failure.
    ~SaveFile()
    {
        if (stream)
            stream->set_error_state(KIVStream::CANT_WRITE);
        close_safely(store, stream);
    }

    /// Null if anything has failed.
    KIVOStream* inq_stream() const { return stream; }

    /// All is written.
    void finish()
    {
        if (KIVOStream* written = std::exchange(stream, nullptr))
            store.close_stream(written);
    }

private:
    XSheetStoreController& store;
    gsl::owner<KIVOStream*> stream;
};

/// Writes `object` as a file of the open folder, unless anything has failed.
inline void save_object(XSheetStoreController& store, const KIVString& name,
                        const KIVObject* object)
{
    SaveFile file(store, name);
    if (file.inq_stream()) {
        file.inq_stream()->insert_with_class_hdr(object);
        file.finish();
    }
}
