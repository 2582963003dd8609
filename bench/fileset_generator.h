#pragma once
// Generator of large file sets for the benchmarks: a setup file with folders,
// data sets (each with C columns and F filters) and tabs, a defaults file with
// system profiles and a views file with user profiles and customisations, in
// the formats the editor reads. Deterministic: the same shape gives the same
// files.
#include <string>
#include <vector>

namespace cvve::bench {

struct FileSetShape {
  int profiles = 10000;            // distinct profile names, split between the two files
  double views_share = 0.5;        // share of them that are user profiles (views file only)
  double customised_share = 0.1;   // share of system profiles also customised in the views file
  double user_where_share = 0.01;  // share of profiles whose SQL holds %USERWHERE%
  int data_sets = 4;
  int columns = 30;       // C: columns per data set
  int filters = 30;       // F: filters per data set
  int used_columns = 8;   // used columns per profile (at most C)
  int saved_filters = 6;  // FilterChecks entries per user profile (at most F)
  // The first `wide_profiles` user profiles use C columns and save F filters.
  int wide_profiles = 0;
  int users = 10;         // U: the host's users
  int folders = 6;        // folder Index 0..folders-1, plus a hidden 99
  int tabs = 8;
};

struct FileSet {
  std::string folder;  // where the files are
  std::string views = "acctviews.xml";
  std::string defaults = "acctviewsdef.xml";
  std::string setup = "viewsetup.xml";
  std::vector<std::string> users;
  // Names of a few profiles worth loading: the first user profile, the first
  // system profile and the first customised system profile.
  std::string user_profile, system_profile, customised_profile;
};

// The name of the i-th profile (0-based).
std::string ProfileName(int index);

// Writes the three files into `folder` (created when missing). Throws
// std::runtime_error when a file cannot be written.
FileSet WriteFileSet(const std::string& folder, const FileSetShape& shape);

// The texts WriteFileSet writes, for callers that want them in memory.
std::string SetupText(const FileSetShape& shape);
std::string DefaultsText(const FileSetShape& shape);
std::string ViewsText(const FileSetShape& shape);

}  // namespace cvve::bench
