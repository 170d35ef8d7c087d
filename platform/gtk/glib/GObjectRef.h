#pragma once

#include <gio/gio.h>

#include <memory>
#include <utility>

namespace quillmere::platform::gtk {

/// Owns one reference to a GObject; copying takes another.
template <typename T>
class GObjectRef {
public:
    GObjectRef() = default;
    GObjectRef(const GObjectRef& other) : object_(other.object_) {
        if (object_)
            g_object_ref(object_);
    }
    GObjectRef(GObjectRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    GObjectRef& operator=(GObjectRef other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~GObjectRef() {
        if (object_)
            g_object_unref(object_);
    }

    /// Takes over a reference that the caller was given ("transfer full").
    static GObjectRef adopt(T* object) { return GObjectRef(object); }
    /// Takes a reference of its own; a floating one is sunk, so that a new widget is owned from the start.
    static GObjectRef share(T* object) {
        if (object)
            g_object_ref_sink(object);
        return GObjectRef(object);
    }

    T* get() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

private:
    explicit GObjectRef(T* object) : object_(object) {}
    T* object_ = nullptr;
};

/// Remembers a GObject without keeping it alive.
template <typename T>
class GObjectWeak {
public:
    GObjectWeak() { g_weak_ref_init(&reference_, nullptr); }
    GObjectWeak(const GObjectWeak&) = delete;
    GObjectWeak& operator=(const GObjectWeak&) = delete;
    ~GObjectWeak() { g_weak_ref_clear(&reference_); }

    void set(T* object) { g_weak_ref_set(&reference_, object); }
    GObjectRef<T> lock() { return GObjectRef<T>::adopt(static_cast<T*>(g_weak_ref_get(&reference_))); }

private:
    GWeakRef reference_{};
};

struct GlibFree {
    void operator()(void* memory) const noexcept { g_free(memory); }
};
struct GlibErrorFree {
    void operator()(GError* error) const noexcept { g_error_free(error); }
};
struct GlibBytesUnref {
    void operator()(GBytes* bytes) const noexcept { g_bytes_unref(bytes); }
};
struct GlibVariantUnref {
    void operator()(GVariant* variant) const noexcept { g_variant_unref(variant); }
};

struct KeyFileFree {
    void operator()(GKeyFile* file) const noexcept { g_key_file_free(file); }
};
struct TextListFree {
    void operator()(char** list) const noexcept { g_strfreev(list); }
};

using KeyFile = std::unique_ptr<GKeyFile, KeyFileFree>;
using TextList = std::unique_ptr<char*, TextListFree>;
using GlibText = std::unique_ptr<char, GlibFree>;
using GlibError = std::unique_ptr<GError, GlibErrorFree>;
using GlibBytes = std::unique_ptr<GBytes, GlibBytesUnref>;
using GlibVariant = std::unique_ptr<GVariant, GlibVariantUnref>;

} // namespace quillmere::platform::gtk
