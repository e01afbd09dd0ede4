#pragma once

#include <surveymsg/surveymsg.h>

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace demo {

/// The program that knows no class of message: it shows whatever it is given by the member operations of
/// `CMsg`, and finds the members it sums up by their labels.
class MemberTool {
public:
    /// What the messages say together; lengths in metres.
    struct Summary {
        std::optional<double> north, east, depth;
        std::optional<double> standardDeviation;  ///< infinite if there is no solution
        std::size_t used = 0;
        std::size_t observations = 0;

        bool IsSolved() const;
        /// "solved N=0.000 E=0.006 U=-0.069 sd=0.010 used=529 of=555", or "no solution used=0 of=555".
        std::string Text() const;
    };

    /// Writes to `out`. Without `all` only the first message is shown, and the start of its lists.
    MemberTool(std::ostream& out, bool all) : out_(out), all_(all) {}

    /// Shows the message and adds it to the summary.
    void Take(CMsg& message);
    /// Shows a message that the summary is not about.
    void Show(CMsg& message);
    /// Says what was not shown.
    void Finish();

    const Summary& Result() const { return summary_; }

private:
    void ShowList(CMsg& message, const std::vector<const MemberDefinition*>& columns);
    void Add(CMsg& message);

    std::ostream& out_;
    bool all_;
    std::size_t taken_ = 0;
    Summary summary_;
};

}  // namespace demo
