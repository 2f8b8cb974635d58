#pragma once

#include <memory>
#include <string>
#include <vector>

struct xkb_keymap;

namespace quillmere {

/// The keymap that a desktop has made of its layouts, made once more to look up
/// what keys type. One thread.
class LayoutKeymap {
public:
    /// `sourceIDs` are the desktop's layouts in their order ("xkb:us+dvorak");
    /// what is no layout is left out, and none at all is the American one. Takes
    /// some milliseconds.
    explicit LayoutKeymap(const std::vector<std::string>& sourceIDs);
    ~LayoutKeymap();
    LayoutKeymap(LayoutKeymap&&) noexcept;
    LayoutKeymap& operator=(LayoutKeymap&&) noexcept;

    /// Null when there is no keymap of these layouts.
    xkb_keymap* get() const { return keymap_.get(); }

    /// Those that are in it, in its order.
    const std::vector<std::string>& ids() const { return ids_; }

private:
    struct Deleter {
        void operator()(xkb_keymap* keymap) const;
    };

    std::vector<std::string> ids_;
    std::unique_ptr<xkb_keymap, Deleter> keymap_;
};

}  // namespace quillmere
