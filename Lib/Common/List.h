// Singly linked lists of nodes with a Next, appended to in order.
#pragma once

#include <new>

template <typename Node> struct List {
    Node* Head;
    Node* Tail;
};

// Appends a zeroed node and gives it; null without memory, the list unchanged.
template <typename Node> Node* ListAppend(List<Node>* list) {
    auto* node = new (std::nothrow) Node{};
    if (node != nullptr) {
        (list->Tail == nullptr ? list->Head : list->Tail->Next) = node;
        list->Tail = node;
    }
    return node;
}

// Releases every node and empties the list.
template <typename Node> void ListRelease(List<Node>* list) {
    while (Node* node = list->Head) {
        list->Head = node->Next;
        delete node;
    }
    list->Tail = nullptr;
}
