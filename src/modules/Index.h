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

/// Finds the object that belongs to a key, a handle or an address: a hash table that is read without a lock,
/// in the same time for one entry and for a million. A look-up compares keys and reads nothing behind them.
/// An object that was found may have been removed since, so it has to live on, or to tell.
///
/// Any thread. Those who change the index take turns; a look-up that meets a change repeats itself.
template <class Key, class Value>
class Index {
public:
    Index() { publish(std::make_unique<Table>(first_size)); }
    Index(const Index&) = delete;
    Index& operator=(const Index&) = delete;

    /// Makes room for one more entry, so that the next add() does not throw. Throws std::bad_alloc.
    void reserve_one()
    {
        const std::lock_guard lock{m_mutex};
        if (2 * (m_size + 1) > m_tables.back()->size())
            grow();
    }

    /// The key must be new, the value not null. Throws std::bad_alloc when there is no memory for another
    /// entry; nothing has changed then.
    void add(Key key, Value* value)
    {
        reserve_one();
        const std::lock_guard lock{m_mutex};
        const Change change{m_version};
        m_tables.back()->put(key, value);
        ++m_size;
    }

    /// Does nothing for an unknown key.
    void remove(Key key) noexcept
    {
        const std::lock_guard lock{m_mutex};
        Table& table = *m_tables.back();
        const size_t place = table.find(key);
        if (table[place].is_empty())
            return;
        const Change change{m_version};
        table.take_out(place);
        --m_size;
    }

    /// Null for an unknown key.
    Value* find(Key key) const noexcept
    {
        const unsigned version = m_version.load(std::memory_order_acquire);
        Value* const value = m_table.load(std::memory_order_acquire)->value_of(key);
        return is_current(version) ? value : find_again(key);
    }

    /// The same for a caller that has another way if it gets null, and that notices if what it gets is not
    /// what the key belongs to: a look-up that meets a change may give it either.
    Value* glance(Key key) const noexcept { return m_table.load(std::memory_order_acquire)->value_of(key); }

private:
    static constexpr size_t first_size = 256;

    struct Entry {
        bool is_empty() const noexcept { return value.load(std::memory_order_acquire) == nullptr; }

        std::atomic<Key> key{};
        std::atomic<Value*> value{nullptr};
    };

    /// Open addressing: an entry stands at its key's own place or after it, without a gap between.
    class Table {
    public:
        /// `size` is a power of 2.
        explicit Table(size_t size) : m_mask{size - 1}, m_entries{std::make_unique<Entry[]>(size)} {}

        size_t size() const noexcept { return m_mask + 1; }
        Entry& operator[](size_t place) noexcept { return m_entries[place]; }
        const Entry& operator[](size_t place) const noexcept { return m_entries[place]; }

        /// The place of a key, or the empty one after all where it could be. There is always an empty one,
        /// also during a change.
        size_t find(Key key) const noexcept { return static_cast<size_t>(entry_of(key) - m_entries.get()); }

        Value* value_of(Key key) const noexcept
        {
            return entry_of(key)->value.load(std::memory_order_acquire);
        }

        void put(Key key, Value* value) noexcept
        {
            Entry& entry = *entry_of(key);
            entry.key.store(key, std::memory_order_release);
            entry.value.store(value, std::memory_order_release);
        }

        /// Moves those entries up that would no longer be found behind the gap.
        void take_out(size_t gap) noexcept
        {
            for (size_t place = after(gap); !m_entries[place].is_empty(); place = after(place)) {
                const Entry& entry = m_entries[place];
                const Key key = entry.key.load(std::memory_order_relaxed);
                if (distance(own_place(key), place) < distance(gap, place))
                    continue; // its own place is behind the gap
                m_entries[gap].key.store(key, std::memory_order_release);
                m_entries[gap].value.store(entry.value.load(std::memory_order_relaxed),
                                           std::memory_order_release);
                gap = place;
            }
            m_entries[gap].key.store(Key{}, std::memory_order_release);
            m_entries[gap].value.store(nullptr, std::memory_order_release);
        }

    private:
        Entry* entry_of(Key key) const noexcept
        {
            Entry* const entries = m_entries.get();
            for (size_t place = own_place(key);; place = after(place)) {
                Entry* const entry = entries + place;
                if (entry->key.load(std::memory_order_acquire) == key || entry->is_empty())
                    return entry;
            }
        }

        /// The multiplication spreads all bits of the key over the upper half.
        size_t own_place(Key key) const noexcept
        {
            constexpr uint64_t golden_ratio = 0x9E3779B97F4A7C15;
            return static_cast<size_t>(number_of(key) * golden_ratio >> 32U) & m_mask;
        }
        static uint64_t number_of(uint64_t key) noexcept { return key; }
        static uint64_t number_of(const void* key) noexcept { return reinterpret_cast<uintptr_t>(key); }
        size_t after(size_t place) const noexcept { return (place + 1) & m_mask; }
        size_t distance(size_t from, size_t to) const noexcept { return (to - from) & m_mask; }

        const size_t m_mask;
        const std::unique_ptr<Entry[]> m_entries;
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

    /// Whether nothing has changed since `version` was read, and nothing was changing then.
    bool is_current(unsigned version) const noexcept
    {
        return version % 2 == 0 && m_version.load(std::memory_order_relaxed) == version;
    }

    [[gnu::cold]] Value* find_again(Key key) const noexcept
    {
        for (;;) {
            std::this_thread::yield(); // whoever changes the index may have lost its processor
            const unsigned version = m_version.load(std::memory_order_acquire);
            Value* const value = m_table.load(std::memory_order_acquire)->value_of(key);
            if (is_current(version))
                return value;
        }
    }

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
            if (!old[place].is_empty())
                larger->put(old[place].key.load(std::memory_order_relaxed),
                            old[place].value.load(std::memory_order_relaxed));
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
