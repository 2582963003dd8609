// Feeds arbitrary bytes to `viewedit script` as the script, on a small file
// set in a folder of its own. A line may fail; nothing may crash or hang.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <sstream>
#include <string>
#include <unistd.h>

#include "fuzz_files.h"
#include "script/script_runner.h"

using cvve::fuzz::kProfiles;
using cvve::fuzz::kSetup;
using cvve::fuzz::WriteFile;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  namespace fs = std::filesystem;
  static const fs::path dir = cvve::fuzz::OwnFolder("cvve-script-fuzz-");
  // Every input starts from the same files, whatever the last one wrote.
  for (const char* name : {"acctviews.xml", "v_invviews.xml", "eodviews.xml"}) {
    WriteFile(dir / name, kProfiles);
  }
  for (const char* name : {"viewsetup.xml", "reportsetup.xml", "v_invsetup.xml", "eodsetup.xml"}) {
    WriteFile(dir / name, kSetup);
  }
  cvve::DefaultHostServices host = cvve::fuzz::HostIn(dir);
  std::ostringstream out;
  cvve::script::ScriptRunner runner(host, out);
  try {
    runner.Run(std::string_view(reinterpret_cast<const char*>(data), size));
  } catch (const std::exception&) {
    // A failing line is the script's answer, not a fault.
  }
  return 0;
}
