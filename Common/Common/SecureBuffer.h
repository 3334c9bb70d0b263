#pragma once
// Containers for key material: wiped when released, whatever the path.

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/SecureMemory.h"
#include "platform/Text.h"

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
// It takes text from plain strings, but gives it out only as a view.
template <typename Char>
class WipedText {
public:
    using View = std::basic_string_view<Char>;

    WipedText() = default;
    WipedText(View text) : text_(text) {}
    WipedText(const Char* text) : text_(text) {}
    WipedText(const std::basic_string<Char>& text) : text_(text.data(), text.size()) {}
    WipedText(const WipedText&) = default;
    WipedText& operator=(const WipedText&) = default;
    WipedText(WipedText&& other) noexcept : text_(std::move(other.text_)) { other.Clear(); }
    WipedText& operator=(WipedText&& other) noexcept {
        if (this != &other) {
            Clear();
            text_ = std::move(other.text_);
            other.Clear();
        }
        return *this;
    }
    ~WipedText() { Clear(); }

    View Text() const { return {text_.data(), text_.size()}; }
    operator View() const { return Text(); }
    bool Empty() const { return text_.empty(); }
    std::size_t Size() const { return text_.size(); }
    void Assign(View text) {
        Clear();
        text_.assign(text.begin(), text.end());
    }
    void Clear() {
        platform::SecureWipe(text_.data(), text_.capacity() * sizeof(Char));
        text_.clear();
    }
    bool operator==(const WipedText& other) const { return Text() == other.Text(); }

private:
    std::basic_string<Char, std::char_traits<Char>, WipingAllocator<Char>> text_;
};

using SecureU16String = WipedText<char16_t>;
using SecureString = WipedText<char>;

// UTF-8 to UTF-16 with no copy of the text left behind.
inline SecureU16String SecureUtf16FromUtf8(std::string_view utf8) {
    std::u16string wide = platform::Utf8ToUtf16(utf8);  // sized once: it never moved
    SecureU16String secure(wide);
    platform::SecureWipe(wide.data(), wide.capacity() * sizeof(char16_t));
    return secure;
}

}  // namespace Zelmarik
