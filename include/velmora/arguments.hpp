// The argument types of the C++ layer (velmora.hpp): texts and string lists.
#ifndef VELMORA_ARGUMENTS_HPP
#define VELMORA_ARGUMENTS_HPP

#include <algorithm>
#include <climits>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

namespace velmora {

/* ------------------------------------------------------------------------ */
/* Argument types                                                            */
/* ------------------------------------------------------------------------ */

// A NUL-terminated text argument: a const char * (null allowed) or a
// std::string, never copied. Meant for parameters: a CString must not
// outlive the string it was made from.
class CString {
public:
    CString(const char *text) noexcept : text_(text) {}
    CString(const std::string &text) noexcept : text_(text.c_str()) {}
    CString(std::nullptr_t) noexcept : text_(nullptr) {}
    const char *c_str() const noexcept { return text_; }

private:
    const char *text_;
};

// A list of strings for the array form of a C function, built for the one
// call it is an argument of. Up to 16 strings, and up to 256 bytes of copied
// string views, need no heap allocation.
class StringList {
public:
    // One element: a terminated text (const char *, std::string), or a view
    // that is copied with a NUL added.
    class Item {
    public:
        Item(const char *text) noexcept : data_(text), size_(0), terminated_(true) {}
        Item(const std::string &text) noexcept : data_(text.c_str()), size_(0), terminated_(true) {}
        Item(std::string_view text) noexcept : data_(text.data()), size_(text.size()), terminated_(false) {}

    private:
        friend class StringList;
        const char *data_;
        std::size_t size_;
        bool terminated_;
    };

    // Whether Range is a range whose elements make Items (and not itself one
    // string, which would be a range of characters).
    template <class Range>
    static constexpr bool isStringRange(...) { return false; }
    template <class Range, class Element = decltype(*std::begin(std::declval<const Range &>())),
              class = decltype(std::end(std::declval<const Range &>()))>
    static constexpr bool isStringRange(int) {
        return std::is_constructible_v<Item, Element> && !std::is_convertible_v<const Range &, Item> &&
               !std::is_same_v<std::decay_t<Range>, StringList>;
    }

    StringList() noexcept = default;
    StringList(std::initializer_list<Item> items) { fill(items.begin(), items.end()); }
    template <class Range, class = std::enable_if_t<isStringRange<Range>(0)>>
    StringList(const Range &strings) {
        using std::begin;
        using std::end;
        fill(begin(strings), end(strings));
    }
    StringList(const StringList &) = delete;
    StringList &operator=(const StringList &) = delete;

    int count() const noexcept { return count_; }
    const char **data() const noexcept { return items_; }

private:
    static constexpr std::size_t kInlineItems = 16;
    static constexpr std::size_t kInlineBytes = 256;

    template <class It>
    void fill(It first, It last) {
        std::size_t count = 0, bytes = 0;
        for (It i = first; i != last; ++i, ++count) {
            Item item(*i);
            if (!item.terminated_) bytes += item.size_ + 1;
        }
        if (count > static_cast<std::size_t>(INT_MAX)) throw std::length_error("velmora: string list too long");
        if (count > kInlineItems) {
            heapItems_.reset(new const char *[count]);
            items_ = heapItems_.get();
        }
        char *copy = inlineBytes_;
        if (bytes > kInlineBytes) {
            heapBytes_.reset(new char[bytes]);
            copy = heapBytes_.get();
        }
        for (std::size_t n = 0; first != last; ++first, ++n) {
            Item item(*first);
            if (item.terminated_) {
                items_[n] = item.data_;
                continue;
            }
            items_[n] = copy;
            copy = std::copy(item.data_, item.data_ + item.size_, copy);
            *copy++ = '\0';
        }
        count_ = static_cast<int>(count);
    }

    const char *inlineItems_[kInlineItems];
    char inlineBytes_[kInlineBytes];
    std::unique_ptr<const char *[]> heapItems_;
    std::unique_ptr<char[]> heapBytes_;
    const char **items_ = inlineItems_;
    int count_ = 0;
};

}  // namespace velmora

#endif
