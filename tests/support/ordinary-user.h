#pragma once

#include <unistd.h>

/// Takes a user's rights away from the process as long as it lives: as root every file can be read.
class TOrdinaryUser {
 public:
  TOrdinaryUser() : user(geteuid()), isOrdinary(user != 0 || seteuid(65534) == 0) {}
  ~TOrdinaryUser() { [[maybe_unused]] const int status = seteuid(user); }
  TOrdinaryUser(const TOrdinaryUser&) = delete;
  TOrdinaryUser& operator=(const TOrdinaryUser&) = delete;

  const uid_t user;
  const bool isOrdinary;
};
