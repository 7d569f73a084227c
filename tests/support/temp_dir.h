// Test helper: runs each test in a fresh, private working directory (the stores use the current
// directory), writes whole files as bytes (store_helpers.h reads them) and counts descriptors.
#ifndef PINDLE_TEST_TEMP_DIR_H
#define PINDLE_TEST_TEMP_DIR_H

#include "support/store_helpers.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

class TempDirTest : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/pindle_test_XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir_ = pattern;
        previous_ = std::filesystem::current_path();
        std::filesystem::current_path(dir_);
    }
    void TearDown() override {
        std::filesystem::current_path(previous_);
        std::filesystem::remove_all(dir_);
    }

    static void writeFile(const std::string& name, const std::string& bytes) {
        std::ofstream(name, std::ios::binary) << bytes;
    }
    static bool exists(const std::string& name) { return std::filesystem::exists(name); }
    // How many descriptors this process holds open.
    static long openDescriptors() {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    }

    std::filesystem::path dir_;

private:
    std::filesystem::path previous_;
};

#endif
