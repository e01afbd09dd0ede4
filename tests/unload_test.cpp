// Unloading the library while the program goes on: what it has published is retired before `dlclose` is over.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "support/RecordingBus.h"

namespace {

TEST(Unload, RetiresWhatWasPublished) {
    for (int round = 0; round < 2; ++round) {
        void* plugin = dlopen(PLUGIN, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(plugin, nullptr) << dlerror();
        const auto send = reinterpret_cast<int (*)()>(dlsym(plugin, "SendFromPlugin"));
        ASSERT_NE(send, nullptr);
        EXPECT_EQ(send(), 1);
        TheRecordingBus().TakeCalls();
        dlclose(plugin);
        EXPECT_EQ(TheRecordingBus().TakeCalls(), "unpublish 'PRX~Position''plugin'");
    }
}

}  // namespace
