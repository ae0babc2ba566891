#pragma once

#include "Model/Entry.h"

#include <functional>
#include <optional>
#include <stop_token>
#include <string>

namespace tallyroom::FileRemover {

/// Asked for an item that has left its place and can still come back: why it must.
using SecondLook = std::function<std::optional<std::string>()>;

/// A screening's answer for one item.
struct Screened {
    /// Why the item must stay, in words for people; it then counts as failed.
    std::optional<std::string> refusal;
    /// To be asked once the item lies in the trash or, where it goes for good, under another name in its
    /// folder; none where that cannot change the answer.
    SecondLook secondLook;
};

/// Looks at an item right before it goes, on the batch's thread; gives up when `stop` comes.
using Screening = std::function<Screened(const Entry& entry, const std::stop_token& stop)>;

} // namespace tallyroom::FileRemover
