// Sole ownership of one platform handle: closed exactly once, when its owner goes.
// Traits give the handle type, its "no handle" value and how to close it.
#pragma once

#include <utility>

namespace tolvane {

template <class Traits> class UniqueAny {
public:
    using Type = typename Traits::Type;

    UniqueAny() noexcept = default;
    explicit UniqueAny(Type handle) noexcept : handle_(handle) {}
    UniqueAny(UniqueAny&& other) noexcept : handle_(other.release()) {}
    UniqueAny& operator=(UniqueAny&& other) noexcept {
        if (this != &other)
            reset(other.release());
        return *this;
    }
    UniqueAny(const UniqueAny&) = delete;
    UniqueAny& operator=(const UniqueAny&) = delete;
    ~UniqueAny() { reset(); }

    Type get() const noexcept { return handle_; }
    explicit operator bool() const noexcept { return handle_ != Traits::Invalid(); }

    // Gives up ownership without closing.
    Type release() noexcept { return std::exchange(handle_, Traits::Invalid()); }

    void reset(Type handle = Traits::Invalid()) noexcept {
        Type old = std::exchange(handle_, handle);
        if (old != Traits::Invalid())
            Traits::Close(old);
    }

    // For APIs that return a handle through a pointer: closes what is held first.
    Type* put() noexcept {
        reset();
        return &handle_;
    }

private:
    Type handle_ = Traits::Invalid();
};

} // namespace tolvane
