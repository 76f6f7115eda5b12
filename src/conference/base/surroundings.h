// What the companion's commands need of the system they run on.
#pragma once

#include <string>

/// The status of a command of which something went wrong.
constexpr int QD_STATUS_TROUBLE = 1;

/// The directory for the members' directories, absolute, made if need be; a new
/// one for "". "" with a line on standard error if it cannot be had.
std::string qd_make_directory(const std::string& wanted);

/// The client's program, an absolute path; for "" the one beside this program.
/// "" with a line on standard error if there is none.
std::string qd_find_client(const std::string& wanted);

/// Prints the line on standard error. Returns QD_STATUS_TROUBLE.
int qd_complain(const std::string& trouble);
