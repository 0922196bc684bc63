#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace zvgentl {

/// Finds the value that belongs to an address: a hash table that is read without a lock, in the same time for
/// one entry and for a million. A look-up compares the address and reads nothing behind it. A value that was
/// found may have been removed since, so it has to live on, or to tell.
///
/// Any thread. Those who change the index take turns; a look-up that meets a change repeats itself.
template <class Value>
class AddressIndex {
public:
    AddressIndex() { publish(std::make_unique<Table>(first_size)); }
    AddressIndex(const AddressIndex&) = delete;
    AddressIndex& operator=(const AddressIndex&) = delete;

    /// The address must be new. Throws std::bad_alloc when there is no memory for another entry; nothing has
    /// changed then.
    void add(const void* address, Value* value)
    {
        const std::lock_guard lock{m_mutex};
        if (2 * (m_size + 1) > m_tables.back()->size())
            grow();
        const Change change{m_version};
        m_tables.back()->put(address, value);
        ++m_size;
    }

    /// Does nothing for an unknown address.
    void remove(const void* address) noexcept
    {
        const std::lock_guard lock{m_mutex};
        Table& table = *m_tables.back();
        const size_t place = table.find(address);
        if (table[place].address.load(std::memory_order_relaxed) == nullptr)
            return;
        const Change change{m_version};
        table.take_out(place);
        --m_size;
    }

    /// Null for an unknown address.
    Value* find(const void* address) const noexcept
    {
        for (;;) {
            const unsigned version = m_version.load(std::memory_order_acquire);
            const Table& table = *m_table.load(std::memory_order_acquire);
            Value* const value = table[table.find(address)].value.load(std::memory_order_acquire);
            if (version % 2 == 0 && m_version.load(std::memory_order_relaxed) == version)
                return value;
            std::this_thread::yield(); // whoever changes the index may have lost its processor
        }
    }

private:
    static constexpr size_t first_size = 64;

    struct Entry {
        std::atomic<const void*> address{nullptr};
        std::atomic<Value*> value{nullptr};
    };

    /// Open addressing: an entry stands at its address's own place or after it, without a gap between.
    class Table {
    public:
        explicit Table(size_t size) : m_entries(size), m_mask{size - 1} {} // a power of 2

        size_t size() const noexcept { return m_mask + 1; }
        Entry& operator[](size_t place) noexcept { return m_entries[place]; }
        const Entry& operator[](size_t place) const noexcept { return m_entries[place]; }

        /// The place of an address, or the empty one, without a value, after all where it could be. There is
        /// always an empty one, also during a change.
        size_t find(const void* address) const noexcept
        {
            for (size_t place = own_place(address);; place = after(place)) {
                const void* const found = m_entries[place].address.load(std::memory_order_acquire);
                if (found == address || found == nullptr)
                    return place;
            }
        }

        void put(const void* address, Value* value) noexcept
        {
            Entry& entry = m_entries[find(address)];
            entry.value.store(value, std::memory_order_release);
            entry.address.store(address, std::memory_order_release);
        }

        /// Moves those entries up that would no longer be found behind the gap.
        void take_out(size_t gap) noexcept
        {
            for (size_t place = after(gap);; place = after(place)) {
                const void* const address = m_entries[place].address.load(std::memory_order_relaxed);
                if (address == nullptr)
                    break;
                if (distance(own_place(address), place) < distance(gap, place))
                    continue; // its own place is behind the gap
                m_entries[gap].value.store(m_entries[place].value.load(std::memory_order_relaxed),
                                           std::memory_order_release);
                m_entries[gap].address.store(address, std::memory_order_release);
                gap = place;
            }
            m_entries[gap].value.store(nullptr, std::memory_order_release);
            m_entries[gap].address.store(nullptr, std::memory_order_release);
        }

    private:
        /// Objects lie at multiples of 16; the multiplication spreads the other bits.
        size_t own_place(const void* address) const noexcept
        {
            constexpr uint64_t golden_ratio = 0x9E3779B97F4A7C15;
            return static_cast<size_t>((reinterpret_cast<uintptr_t>(address) >> 4U) * golden_ratio >> 32U) &
                   m_mask;
        }
        size_t after(size_t place) const noexcept { return (place + 1) & m_mask; }
        size_t distance(size_t from, size_t to) const noexcept { return (to - from) & m_mask; }

        std::vector<Entry> m_entries;
        size_t m_mask;
    };

    /// Makes the version odd while entries change.
    class Change {
    public:
        explicit Change(std::atomic<unsigned>& version) noexcept : m_version{version}
        {
            m_version.fetch_add(1);
        }
        ~Change() { m_version.fetch_add(1); }
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;

    private:
        std::atomic<unsigned>& m_version;
    };

    void publish(std::unique_ptr<Table> table)
    {
        m_tables.push_back(std::move(table));
        m_table.store(m_tables.back().get(), std::memory_order_release);
    }

    void grow()
    {
        const Table& old = *m_tables.back();
        auto larger = std::make_unique<Table>(2 * old.size());
        for (size_t place = 0; place < old.size(); ++place) {
            if (const void* const address = old[place].address.load(std::memory_order_relaxed))
                larger->put(address, old[place].value.load(std::memory_order_relaxed));
        }
        publish(std::move(larger));
    }

    std::mutex m_mutex; // of those who change the index
    size_t m_size{0};
    std::vector<std::unique_ptr<Table>> m_tables; // all there were: a look-up may still be in an old one
    std::atomic<unsigned> m_version{0};
    std::atomic<const Table*> m_table{nullptr};
};

} // namespace zvgentl
