#pragma once

namespace demo {

/// The text of `sample/ranging-sample.txt`.
extern const char kSampleText[];

}  // namespace demo
