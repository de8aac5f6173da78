// Sorting of short lists, where insertion is quickest and equal items must keep their order.
#pragma once

// Moves the last item of a list whose others are sorted to its place, behind all that are as good.
// `goesBefore(a, b)` is a strict order.
template <class Item, class GoesBefore>
inline void insertLast(Item* items, int count, GoesBefore goesBefore) {
    const Item item = items[count - 1];
    int place = count - 1;
    for (; place > 0 && goesBefore(item, items[place - 1]); --place) items[place] = items[place - 1];
    items[place] = item;
}

template <class Item, class GoesBefore>
inline void insertionSort(Item* items, int count, GoesBefore goesBefore) {
    for (int sorted = 1; sorted < count; ++sorted) insertLast(items, sorted + 1, goesBefore);
}
