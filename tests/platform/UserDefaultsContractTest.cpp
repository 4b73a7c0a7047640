// What every UserDefaults promises.
#include "platform/native/MemoryUserDefaults.h"
#include "platform/native/OverriddenUserDefaults.h"
#include "tests/platform/TemporaryFolder.h"
#ifdef MERRO_TEST_JSON
#include "platform/native/JsonUserDefaults.h"
#endif

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace merro::platform {
namespace {

struct Memory {
    native::MemoryUserDefaults defaults;
};

/// Keys pass through to the base.
struct OverNothing {
    native::MemoryUserDefaults base;
    native::OverriddenUserDefaults defaults{base};
};

/// All keys of the contract are overridden, and then removed: a layer that hides the base.
struct OverEverything {
    OverEverything() {
        for (const char* const key : {"detectScene", "nbDropFrame", "movieVolume", "name", "key"}) {
            base.setObjectForKey("from the base", key);
            defaults.overrideObjectForKey(1, key);
            defaults.removeObjectForKey(key);
        }
    }
    native::MemoryUserDefaults base;
    native::OverriddenUserDefaults defaults{base};
};

#ifdef MERRO_TEST_JSON
struct JsonFile {
    TemporaryFolder folder;
    native::JsonUserDefaults defaults{folder.path("defaults.json"),
                                      [](const Error& problem) { ADD_FAILURE() << problem.text(); }};
};
using Stores = testing::Types<Memory, OverNothing, OverEverything, JsonFile>;
#else
using Stores = testing::Types<Memory, OverNothing, OverEverything>;
#endif

template <typename Store>
class UserDefaultsContract : public testing::Test {
protected:
    UserDefaults& defaults() { return m_store.defaults; }
    Store m_store;
};
TYPED_TEST_SUITE(UserDefaultsContract, Stores);

using Notes = std::vector<std::string>;

TYPED_TEST(UserDefaultsContract, aMissingKeyReadsAsNothing) {
    EXPECT_EQ(this->defaults().objectForKey("key"), std::nullopt);
    EXPECT_FALSE(this->defaults().boolForKey("key"));
    EXPECT_EQ(this->defaults().integerForKey("key"), 0);
    EXPECT_EQ(this->defaults().doubleForKey("key"), 0.0);
}

TYPED_TEST(UserDefaultsContract, whatIsStoredIsReadBack) {
    this->defaults().setObjectForKey(true, "detectScene");
    this->defaults().setObjectForKey(12, "nbDropFrame");
    this->defaults().setObjectForKey(0.5, "movieVolume");
    this->defaults().setObjectForKey("Évry", "name");
    EXPECT_TRUE(this->defaults().boolForKey("detectScene"));
    EXPECT_EQ(this->defaults().integerForKey("nbDropFrame"), 12);
    EXPECT_EQ(this->defaults().doubleForKey("movieVolume"), 0.5);
    EXPECT_EQ(this->defaults().objectForKey("name"), Value("Évry"));
}

TYPED_TEST(UserDefaultsContract, aValueKeepsItsKind) {
    this->defaults().setObjectForKey(true, "key");
    EXPECT_EQ(this->defaults().objectForKey("key"), Value(true));
    this->defaults().setObjectForKey(1, "key");
    EXPECT_EQ(this->defaults().objectForKey("key"), Value(1));
    this->defaults().setObjectForKey(1.0, "key");
    EXPECT_EQ(this->defaults().objectForKey("key"), Value(1.0));
}

TYPED_TEST(UserDefaultsContract, aRemovedKeyReadsAsMissing) {
    this->defaults().setObjectForKey(1, "key");
    this->defaults().removeObjectForKey("key");
    this->defaults().removeObjectForKey("key");
    EXPECT_EQ(this->defaults().objectForKey("key"), std::nullopt);
}

TYPED_TEST(UserDefaultsContract, observersHearOfTheirKeyAfterEachChangeAndOfEqualValuesToo) {
    Notes notes;
    const auto observation = this->defaults().addObserver("key", [&](const std::string& key) {
        notes.push_back(key + "=" + std::to_string(this->defaults().integerForKey(key)));
    });
    this->defaults().setObjectForKey(3, "key");
    this->defaults().setObjectForKey(3, "key");
    this->defaults().setObjectForKey(4, "name");
    this->defaults().removeObjectForKey("key");
    EXPECT_EQ(notes, (Notes{"key=3", "key=3", "key=0"}));
}

TYPED_TEST(UserDefaultsContract, observersAreCalledInOrderAndOnTheCallingThread) {
    Notes notes;
    std::thread::id seen;
    const auto first = this->defaults().addObserver("key", [&](const auto&) {
        notes.emplace_back("first");
        seen = std::this_thread::get_id();
    });
    const auto second =
        this->defaults().addObserver("key", [&](const auto&) { notes.emplace_back("second"); });
    std::thread sets([&] { this->defaults().setObjectForKey(1, "key"); });
    const auto expected = sets.get_id();
    sets.join();
    EXPECT_EQ(notes, (Notes{"first", "second"}));
    EXPECT_EQ(seen, expected);
}

TYPED_TEST(UserDefaultsContract, anEndedObservationHearsNothingMore) {
    int heard = 0;
    {
        const auto observation = this->defaults().addObserver("key", [&](const auto&) { ++heard; });
    }
    this->defaults().setObjectForKey(1, "key");
    EXPECT_EQ(heard, 0);
}

TYPED_TEST(UserDefaultsContract, anObserverMaySetAnotherKey) {
    const auto observation = this->defaults().addObserver(
        "key", [&](const auto&) { this->defaults().setObjectForKey("changed", "name"); });
    this->defaults().setObjectForKey(1, "key");
    EXPECT_EQ(this->defaults().objectForKey("name"), Value("changed"));
}

TYPED_TEST(UserDefaultsContract, oneThreadReadsWhileAnotherWrites) {
    this->defaults().setObjectForKey(0, "key");
    std::atomic<bool> isDone = false;
    std::thread reads([&] {
        while (!isDone)
            EXPECT_GE(this->defaults().integerForKey("key"), 0);
    });
    for (int i = 0; i < 50; ++i)
        this->defaults().setObjectForKey(i, "key");
    isDone = true;
    reads.join();
    EXPECT_EQ(this->defaults().integerForKey("key"), 49);
}

TEST(OverriddenUserDefaults, anOverriddenKeyLeavesTheBaseAlone) {
    native::MemoryUserDefaults base({{"detectScene", true}, {"nbDropFrame", 3}});
    native::OverriddenUserDefaults run(base);
    run.overrideObjectForKey(false, "detectScene");
    EXPECT_FALSE(run.boolForKey("detectScene"));
    run.setObjectForKey("written", "detectScene");
    EXPECT_EQ(run.objectForKey("detectScene"), Value("written"));
    run.removeObjectForKey("detectScene");
    EXPECT_EQ(run.objectForKey("detectScene"), std::nullopt);
    run.setObjectForKey(5, "nbDropFrame"); // not overridden
    EXPECT_EQ(base.dictionary(), (Dictionary{{"detectScene", true}, {"nbDropFrame", 5}}));
}

TEST(OverriddenUserDefaults, aChangeOfTheBaseIsHeardOnlyWhereItShowsThrough) {
    native::MemoryUserDefaults base;
    native::OverriddenUserDefaults run(base);
    int heard = 0;
    const auto observation = run.addObserver("detectScene", [&](const auto&) { ++heard; });
    base.setObjectForKey(true, "detectScene");
    EXPECT_EQ(heard, 1);
    run.overrideObjectForKey(false, "detectScene");
    EXPECT_EQ(heard, 2);
    base.setObjectForKey(true, "detectScene");
    EXPECT_EQ(heard, 2);
}

} // namespace
} // namespace merro::platform
