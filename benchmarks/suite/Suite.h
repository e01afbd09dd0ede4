#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace bench {

/// Does an operation so many times.
using Loop = std::function<void(std::size_t times)>;

/// One operation as one peer does it. `prepare` makes all that the operation needs; the loop it gives owns that.
struct Case {
    std::string operation;  ///< "encode/position"
    std::string peer;       ///< "surveymsg"
    std::function<Loop()> prepare;
    std::function<std::size_t()> encodedBytes = nullptr;  ///< none: the operation makes no bytes

    std::string Name() const { return operation + " " + peer; }
};

/// Something that has to hold for the comparison to be one.
struct Check {
    std::string name;
    std::function<bool()> holds;
};

/// All cases, in the order of the table.
class Suite {
public:
    /// `setup()` gives a callable that does the operation once. Time, heap calls and instructions are all taken
    /// from this one loop.
    template <class Setup>
    Case& Add(std::string operation, std::string peer, Setup setup) {
        cases_.push_back({std::move(operation), std::move(peer), [setup] {
                              auto once = std::make_shared<decltype(setup())>(setup());
                              return Loop([once](std::size_t times) {
                                  auto& operation_ = *once;
                                  for (; times > 0; --times) operation_();
                              });
                          }});
        return cases_.back();
    }
    void Expect(std::string name, std::function<bool()> holds) {
        checks_.push_back({std::move(name), std::move(holds)});
    }

    const std::vector<Case>& Cases() const { return cases_; }
    const std::vector<Check>& Checks() const { return checks_; }

private:
    std::vector<Case> cases_;
    std::vector<Check> checks_;
};

}  // namespace bench
