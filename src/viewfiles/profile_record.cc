#include "viewfiles/profile_record.h"

#include "component/frm_acct_view_edit.h"

namespace cvve {

namespace {
XmlNode SelectIn(frmAcctViewEdit& ed, DocumentCursor& cursor, const std::string& name) {
  cursor.GoToChild("");
  std::vector<XmlNode> found = SelectNodes(cursor.CurrentNode(), ProfilePath(name));
  XmlNode node = found.empty() ? XmlNode() : found.front();
  cursor.SetCurrentNode(node);
  ed.SetCurrentProfileNode(node, cursor);
  return node;
}
}  // namespace

std::string ProfilePath(const std::string& name) {
  return "./Profiles/Profile[Name='" + name + "']";
}

XmlNode SelectProfile(frmAcctViewEdit& ed, const std::string& name) {
  return SelectIn(ed, ed.DefaultsDoc, name);
}

XmlNode SelectProfileCustom(frmAcctViewEdit& ed, const std::string& name) {
  return SelectIn(ed, ed.ViewsDoc, name);
}

XmlNode FindProfileElement(const DocumentCursor& cursor, const std::string& name) {
  XmlNode profiles = cursor.Root().child("Profiles");
  for (XmlNode p = profiles.child("Profile"); p; p = p.next_sibling("Profile")) {
    if (ChildText(p, "Name") == name) return p;
  }
  return {};
}

}  // namespace cvve
