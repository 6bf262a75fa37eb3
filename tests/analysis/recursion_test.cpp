// The recursion check against a model, with formulas added, changed and deleted in any order.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "support/context.h"

namespace {

struct Row {
  HEXP exp;
  std::string name;
  std::vector<std::string> calls;
};

struct Content {
  std::string name;
  std::vector<std::string> calls;

  std::string Text() const {
    std::string text = "1";
    for (const std::string &call : calls) text += " + " + call + "()";
    return text;
  }
};

// A context and its expected content: the rows of its table in order.
struct World {
  OwnedContext context;
  std::vector<Row> rows;
  std::mt19937 random;
  bool announced;
  std::set<HEXP> destroyed;
  std::vector<std::string> pending;  // calls of a formula that is being stored

  const Row *First(const std::string &name) const {
    const auto found =
        std::find_if(rows.begin(), rows.end(), [&](const Row &row) { return row.name == name; });
    return found == rows.end() ? nullptr : &*found;
  }

  bool LeadsTo(const std::string &name, const std::vector<std::string> &calls,
               std::vector<const Row *> &seen) const {
    for (const std::string &call : calls) {
      if (call == name) return true;
      const Row *row = First(call);
      if (row == nullptr || std::count(seen.begin(), seen.end(), row) != 0) continue;
      seen.push_back(row);
      if (LeadsTo(name, row->calls, seen)) return true;
    }
    return false;
  }

  // The message with which the content is rejected as `exp`, or 0.
  int32_t Refusal(const Content &content, HEXP exp, bool unique) const {
    std::vector<const Row *> seen;
    if (LeadsTo(content.name, content.calls, seen)) return ORL_ERR_RECURSIVE;
    const bool taken = std::any_of(rows.begin(), rows.end(), [&](const Row &row) {
      return row.name == content.name && row.exp != exp;
    });
    return unique && taken ? ORL_ERR_DUPNAME : 0;
  }

  std::vector<Row>::iterator RowOf(HEXP exp) {
    return std::find_if(rows.begin(), rows.end(), [&](const Row &row) { return row.exp == exp; });
  }

  // A name, sometimes a free one, and up to three calls of existing formulas.
  Content RandomContent() {
    Content content = {"N" + std::to_string(random() % 14), {}};
    for (auto left = random() % 4; left > 0 && !rows.empty(); --left) {
      content.calls.push_back(rows[random() % rows.size()].name);
    }
    return content;
  }

  void Append() {
    const Content content = RandomContent();
    const Parsed parsed = Parse(context.get(), content.Text(), content.name.c_str());
    ASSERT_EQ(parsed.error.id, Refusal(content, nullptr, false)) << content.name << content.Text();
    if (parsed.exp != nullptr) rows.push_back({parsed.exp, content.name, content.calls});
  }

  void Replace() {
    HEXP exp = rows[random() % rows.size()].exp;
    Content content = RandomContent();
    if (random() % 2 == 0) content.name = RowOf(exp)->name;
    const int32_t refused = Refusal(content, exp, true);
    announced = false;
    destroyed.clear();
    pending = content.calls;
    const Parsed parsed = Store(context.get(), exp, content.Text(), content.name.c_str());
    pending.clear();
    const bool gone = destroyed.count(exp) != 0;  // another may have its address
    const int32_t expected = refused != 0 || !announced ? refused
                             : gone                     ? int32_t{ORL_ERR_GENERAL}
                                                        : Refusal(content, exp, true);
    ASSERT_EQ(parsed.error.id, expected) << content.name << " = " << content.Text();
    if (parsed.exp != nullptr) *RowOf(exp) = {exp, content.name, content.calls};
  }

  void Destroy() {
    const auto row = rows.begin() + static_cast<int64_t>(random() % rows.size());
    const auto calls = [&](const std::vector<std::string> &names) {
      return std::count(names.begin(), names.end(), row->name) != 0;
    };
    const bool used = calls(pending) || std::any_of(rows.begin(), rows.end(), [&](const Row &user) {
                        return calls(user.calls);
                      });
    ASSERT_EQ(ORLDestroyEXP(context.get(), row->exp), used ? 0 : 1) << row->name;
    if (!used) {
      destroyed.insert(row->exp);
      rows.erase(row);
    }
  }

  void Step(bool mayReplace) {
    const auto kind = random() % 8;
    if (rows.empty() || kind < 2) {
      Append();
    } else if (kind == 2) {
      Destroy();
    } else if (mayReplace) {
      Replace();
    }
  }
};

World *renaming;

// A host that changes the context while it is notified of a new name.
int32_t ChangeMore(EC, const char *, const char *) {
  World &world = *renaming;
  for (auto steps = world.random() % 6; steps > 0; --steps) world.Step(false);
  world.announced = true;
  return 1;
}

TEST(Recursion, IsRefusedAsInTheModel) {
  for (uint32_t seed = 0; seed < 60 && !testing::Test::HasFatalFailure(); ++seed) {
    World world = {OwnedContext(ORLCreateEC(nullptr, nullptr, &ChangeMore, 0)),
                   {},
                   std::mt19937(seed),
                   false,
                   {},
                   {}};
    renaming = &world;
    for (int step = 0; step < 300 && !testing::Test::HasFatalFailure(); ++step) {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
      world.Step(true);
    }
  }
}

// A rename routine makes the formula call itself through one that calls its new name.
TEST(Recursion, IsRefusedWhereARenameRoutineMakesIt) {
  const auto makeCircle = [](EC ec, const char *, const char *) {
    if (ORLSetUserLong(ec, 1) != 0) return 1;
    HEXP made = Make(ec, "2", "New");
    Store(ec, ORLHEXPFromName(ec, "Other"), "New()", "Other");
    EXPECT_NE(Store(ec, made, "2", "Aside").exp, nullptr);
    return 1;
  };
  const OwnedContext context(ORLCreateEC(nullptr, nullptr, makeCircle, 0));
  EC ec = context.get();
  HEXP exp = Make(ec, "1", "Old");
  Make(ec, "1", "Other");
  EXPECT_EQ(Outcome(Store(ec, exp, "1 + Other()", "New")), "125@4+6");
  EXPECT_EQ(TextOf(ec, exp), "1");
}

}  // namespace
