// A host that opens the account views of the demo data (or of whatever the
// settings file names) and reports how the call ended.
#include <cvviewedit/cls_view_edit.h>

#include <exception>
#include <iostream>

int main() {
  std::cout << "cvViewEdit " << cvve::Version() << "\n";
  try {
    const cvve::HostSettings settings = cvve::HostSettings::Load();
    std::cout << "views: " << settings.views_folder << "\n";
    cvve::clsViewEdit editor(settings);
    editor.AcctViewEdit();
  } catch (const std::exception& e) {
    std::cerr << "AcctViewEdit failed: " << e.what() << "\n";
    return 1;
  }
  std::cout << "AcctViewEdit returned\n";
  return 0;
}
