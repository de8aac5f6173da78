// A word that threads share without ordering: flags, counters, option values. Reads and writes are relaxed
// atomic loads and stores, which are plain moves on x86-64, so that a race is a stale value and nothing
// worse.
#pragma once

#include <atomic>

template <class T>
class Relaxed {
   public:
    constexpr Relaxed() = default;
    constexpr Relaxed(T initial) : value(initial) {}
    Relaxed(const Relaxed& other) : value(other.load()) {}
    Relaxed& operator=(const Relaxed& other) {
        store(other.load());
        return *this;
    }
    Relaxed& operator=(T next) {
        store(next);
        return *this;
    }

    operator T() const { return load(); }
    T load() const { return value.load(std::memory_order_relaxed); }
    void store(T next) { value.store(next, std::memory_order_relaxed); }

    // A load, an addition and a store, never a locked add: for a word with one writer, or where lost
    // additions do no harm.
    void add(T amount) { store(T(load() + amount)); }

    // A full exchange, for flags whose change must be seen by everybody at once.
    T exchange(T next) { return value.exchange(next); }

   private:
    std::atomic<T> value{};
};
