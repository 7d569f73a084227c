// The record store's list against the literal singly linked list it replaced: long random runs
// of append, remove, purge and positional access must agree step for step.
#include "record_store.h"
#include "support/temp_dir.h"

#include <memory>
#include <random>
#include <vector>

namespace {

// A small record, so that runs of thousands stay quick; only the list machinery is under test,
// so it never meets a file.
struct TinyRecord {
    int id = 0;
    bool completed = false;
    TinyRecord* next = nullptr;
};

struct TinyStore : RecordStore<TinyRecord> {
    TinyStore() : RecordStore("tiny.db") {}
    ~TinyStore() {
        removeIf([](const TinyRecord&) { return true; });
    }
};

// The list as it used to be: every operation walks from the head.
struct LiteralList {
    struct Node {
        int id;
        bool completed;
        Node* next;
    };
    Node* head = nullptr;

    ~LiteralList() {
        while (head != nullptr)
            remove(head);
    }
    void append(Node* node) {
        if (head == nullptr) {
            head = node;
            return;
        }
        Node* tail = head;
        while (tail->next != nullptr)
            tail = tail->next;
        tail->next = node;
    }
    void remove(Node* node) {
        if (head == nullptr)
            return;
        if (head == node) {
            head = node->next;
        } else {
            Node* before = head;
            while (before->next != node)
                before = before->next;
            before->next = node->next;
        }
        delete node;
    }
    int count() const {
        int n = 0;
        for (const Node* r = head; r != nullptr; r = r->next)
            n++;
        return n;
    }
    Node* at(int position) const {
        Node* r = head;
        for (int i = 0; i < position && r != nullptr; i++)
            r = r->next;
        return r;
    }
    void purgeCompleted() {
        Node* r = head;
        while (r != nullptr) {
            Node* following = r->next;
            if (r->completed)
                remove(r);
            r = following;
        }
    }
};

class ListRun : public TempDirTest {
protected:
    void append(bool completed) {
        auto* record = new TinyRecord;
        record->id = nextId_;
        record->completed = completed;
        byId_.push_back(record);
        store_.append(record);
        reference_.append(new LiteralList::Node{nextId_++, completed, nullptr});
    }
    void removeAt(int position) {
        LiteralList::Node* node = reference_.at(position);
        store_.remove(store_.at(position));
        reference_.remove(node);
    }
    void purge() {
        store_.removeIf([](const TinyRecord& r) { return r.completed; });
        reference_.purgeCompleted();
    }

    // Same count, same record (by identity) at every position from -2 to count + 1, and the
    // links walk the same order.
    void expectSame(int step) {
        int n = reference_.count();
        ASSERT_EQ(store_.count(), n) << "step " << step;
        for (int i = -2; i <= n + 1; i++)
            ASSERT_EQ(store_.at(i), identity(reference_.at(i))) << "step " << step << " at " << i;
        const TinyRecord* r = store_.head;
        for (const LiteralList::Node* node = reference_.head; node != nullptr; node = node->next) {
            ASSERT_EQ(r, identity(node)) << "step " << step;
            r = r->next;
        }
        ASSERT_EQ(r, nullptr) << "step " << step;
    }

    TinyStore store_;
    LiteralList reference_;

private:
    const TinyRecord* identity(const LiteralList::Node* node) const {
        return node == nullptr ? nullptr : byId_[static_cast<std::size_t>(node->id)];
    }

    int nextId_ = 0;
    std::vector<TinyRecord*> byId_; // never read for a removed record: only the list's ids
};

TEST_F(ListRun, RandomOperationsMatchTheLiteralList) {
    struct Mix {
        unsigned seed;
        int initial, steps;
        int appendPercent, purgePerMille;
    } mixes[] = {{1, 3000, 4000, 50, 2}, {2, 0, 3000, 70, 5}, {3, 2000, 2500, 30, 1}};
    for (const auto& mix : mixes) {
        std::mt19937 random(mix.seed);
        auto chance = [&random](int outOf) { return static_cast<int>(random() % outOf); };
        for (int i = 0; i < mix.initial; i++)
            append(chance(5) == 0);
        for (int step = 0; step < mix.steps; step++) {
            int n = store_.count();
            if (chance(1000) < mix.purgePerMille)
                purge();
            else if (chance(100) < mix.appendPercent)
                append(chance(5) == 0);
            else if (n > 0)
                removeAt(chance(4) == 0 ? (chance(2) == 0 ? 0 : n - 1) : chance(n));
            if (step % 400 == 0 || store_.count() <= 2)
                expectSame(step);
            else
                ASSERT_EQ(store_.count(), reference_.count()) << "step " << step;
        }
        expectSame(mix.steps);
        purge();
        expectSame(-1);
        store_.removeIf([](const TinyRecord&) { return true; });
        while (reference_.head != nullptr)
            reference_.remove(reference_.head);
        expectSame(-2);
    }
}

TEST_F(ListRun, EmptyStoreIgnoresRemoveAndPositions) {
    auto orphan = std::make_unique<TinyRecord>(); // freed here: a double free would show under ASan
    store_.remove(orphan.get());
    for (int position : {-2, -1, 0, 1})
        EXPECT_EQ(store_.at(position), nullptr) << position;
    purge();
    EXPECT_EQ(store_.count(), 0);
    EXPECT_EQ(store_.head, nullptr);
    append(false);
    expectSame(0);
}

} // namespace
