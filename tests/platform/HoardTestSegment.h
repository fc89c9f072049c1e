// A snapshot-store segment for tests: a name unique to this process and call,
// as a shared-memory object or a file, removed at scope exit whatever the
// test's outcome.
#pragma once

#include "QorBgpCommunity/platform/Hoard.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

struct HoardTestSegment {
   explicit HoardTestSegment(bool file) : file(file) {
      static int counter = 0;
      std::string const base =
         "QorBgpHoardTest." + std::to_string(getpid()) + "." + std::to_string(++counter);
      name = file ? (std::filesystem::temp_directory_path() / base).string() : base;
   }
   ~HoardTestSegment() {
      file ? hoard::StoreWriter::removeMappedFile(name) : hoard::StoreWriter::removeSharedMemory(name);
   }
   hoard::StoreWriter create(U64 size) const {
      return file ? hoard::StoreWriter::createMappedFile(name, size)
                  : hoard::StoreWriter::createSharedMemory(name, size);
   }
   hoard::StoreManager open() const {
      return file ? hoard::StoreManager::openMappedFile(name)
                  : hoard::StoreManager::openSharedMemory(name);
   }
   // Cuts the segment (file or shared-memory object) to `size` bytes.
   void truncate(U64 size) const {
      if (file) {
         std::filesystem::resize_file(name, size);
         return;
      }
      int const fd = shm_open(("/" + name).c_str(), O_RDWR, 0);
      ASSERT_NE(fd, -1);
      EXPECT_EQ(ftruncate(fd, static_cast<off_t>(size)), 0);
      close(fd);
   }
   bool file;
   std::string name;
};
