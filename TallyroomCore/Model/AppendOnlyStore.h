#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <utility>

namespace tallyroom {

/// Items that never move: chunks that double in size, the first of 64. One thread at a time appends, under
/// its own lock; any number of threads read the items below a count that the appender has handed them.
template <class Item>
class AppendOnlyStore {
public:
    AppendOnlyStore() = default;
    AppendOnlyStore(const AppendOnlyStore&) = delete;
    AppendOnlyStore& operator=(const AppendOnlyStore&) = delete;

    ~AppendOnlyStore()
    {
        for (std::size_t index = 0; index < m_size; ++index) {
            std::destroy_at(slot(index));
        }
        for (std::size_t chunk = 0; chunk < m_chunks.size(); ++chunk) {
            if (m_chunks[chunk] != nullptr) {
                std::allocator<Item>{}.deallocate(m_chunks[chunk], capacity(chunk));
            }
        }
    }

    void append(Item item)
    {
        const auto [chunk, offset] = place(m_size);
        if (m_chunks[chunk] == nullptr) {
            m_chunks[chunk] = std::allocator<Item>{}.allocate(capacity(chunk));
        }
        std::construct_at(m_chunks[chunk] + offset, std::move(item));
        ++m_size;
    }

    [[nodiscard]] std::size_t size() const noexcept { return m_size; }

    [[nodiscard]] const Item& operator[](std::size_t index) const noexcept { return *slot(index); }

private:
    static constexpr std::size_t firstCapacity = 64;
    static constexpr std::size_t chunkLimit = 40;

    static std::size_t capacity(std::size_t chunk) { return firstCapacity << chunk; }

    /// Chunk c starts at item 64 × (2^c − 1).
    static std::pair<std::size_t, std::size_t> place(std::size_t index)
    {
        const std::size_t shifted = index / firstCapacity + 1;
        const auto chunk = static_cast<std::size_t>(63 - __builtin_clzll(shifted));
        return {chunk, index - firstCapacity * ((std::size_t{1} << chunk) - 1)};
    }

    Item* slot(std::size_t index) const
    {
        const auto [chunk, offset] = place(index);
        return m_chunks[chunk] + offset;
    }

    std::array<Item*, chunkLimit> m_chunks{};
    std::size_t m_size = 0;
};

} // namespace tallyroom
