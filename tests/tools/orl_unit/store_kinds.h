#pragma once

// The kinds of store that this build has, for typed tests: each has a path that a new store can be
// made at.

#include <string>

#include <gtest/gtest.h>

#include "tests/support/scratch_folder.h"
#include "tools/orl_unit/storage_adapter.h"

namespace orl::unit {

class MemoryKind {
  public:
    std::string path() const { return std::string(kMemoryStorePath); }
};

class SqliteKind {
  public:
    std::string path() const { return folder_.PathOf("store.db"); }

  private:
    test::ScratchFolder folder_;
};

#ifdef _WIN32
using StoreKinds = testing::Types<MemoryKind>;
#else
using StoreKinds = testing::Types<MemoryKind, SqliteKind>;
#endif

}  // namespace orl::unit
