#pragma once
// Containers for key material: wiped when released, whatever the path.

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/SecureMemory.h"

namespace Zelmarik {

// An allocator that wipes memory before giving it back. Only for trivially destructible types:
// anything else would run its destructor on wiped bytes.
template <typename T>
requires std::is_trivially_destructible_v<T>
class WipingAllocator {
public:
    using value_type = T;
    WipingAllocator() noexcept = default;
    template <typename U>
    WipingAllocator(const WipingAllocator<U>&) noexcept {}

    T* allocate(std::size_t n) { return std::allocator<T>{}.allocate(n); }
    void deallocate(T* p, std::size_t n) noexcept {
        platform::SecureWipe(p, n * sizeof(T));
        std::allocator<T>{}.deallocate(p, n);
    }
    template <typename U>
    bool operator==(const WipingAllocator<U>&) const noexcept {
        return true;
    }
};

template <typename T>
using SecureVector = std::vector<T, WipingAllocator<T>>;

// A string whose heap buffer is wiped; its small-string buffer is wiped by the destructor too.
// It takes text from plain strings, and gives it out as a view.
class SecureU16String {
public:
    SecureU16String() = default;
    SecureU16String(std::u16string_view text) : text_(text) {}
    SecureU16String(const char16_t* text) : text_(text) {}
    SecureU16String(const std::u16string& text) : text_(text.data(), text.size()) {}
    SecureU16String(const SecureU16String&) = default;
    SecureU16String& operator=(const SecureU16String&) = default;
    SecureU16String(SecureU16String&& other) noexcept : text_(std::move(other.text_)) {
        other.Clear();
    }
    SecureU16String& operator=(SecureU16String&& other) noexcept {
        if (this != &other) {
            Clear();
            text_ = std::move(other.text_);
            other.Clear();
        }
        return *this;
    }
    ~SecureU16String() { Clear(); }

    std::u16string_view View() const { return {text_.data(), text_.size()}; }
    operator std::u16string_view() const { return View(); }
    bool Empty() const { return text_.empty(); }
    std::size_t Size() const { return text_.size(); }
    void Assign(std::u16string_view text) {
        Clear();
        text_.assign(text.begin(), text.end());
    }
    void Clear() {
        platform::SecureWipe(text_.data(), text_.capacity() * sizeof(char16_t));
        text_.clear();
    }

private:
    std::basic_string<char16_t, std::char_traits<char16_t>, WipingAllocator<char16_t>> text_;
};

// A work area for plaintext that is not cleared when made, so that a small job touches only the
// pages it uses. Everything ever handed out is wiped when the area is released. Areas may be
// asked for from several threads at once.
class WipingBytes {
public:
    WipingBytes() = default;
    explicit WipingBytes(std::size_t size) : bytes_(new std::uint8_t[size]), size_(size) {}
    WipingBytes(const WipingBytes&) = delete;
    WipingBytes& operator=(const WipingBytes&) = delete;
    ~WipingBytes() { platform::SecureWipe(bytes_.get(), touched_.load()); }

    std::size_t Size() const { return size_; }
    // The `length` bytes at `offset`; they count as holding plaintext from now on.
    std::span<std::uint8_t> Area(std::size_t offset, std::size_t length) {
        const std::size_t end = offset + length;
        std::size_t touched = touched_.load(std::memory_order_relaxed);
        while (touched < end &&
               !touched_.compare_exchange_weak(touched, end, std::memory_order_relaxed)) {
        }
        return {bytes_.get() + offset, length};
    }

private:
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::size_t size_ = 0;
    std::atomic<std::size_t> touched_{0};
};

}  // namespace Zelmarik
