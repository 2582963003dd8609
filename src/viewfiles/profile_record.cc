#include "viewfiles/profile_record.h"

#include "component/frm_acct_view_edit.h"

namespace cvve {

namespace {

// The first node ProfilePath(name) selects under the document's root. A name
// with an apostrophe changes the expression itself, so it still goes through
// the expression; every other name through the document's index.
XmlNode FirstProfileNamed(frmAcctViewEdit& ed, const DocumentCursor& doc,
                          const std::string& name) {
  if (!doc.Root()) return {};
  if (name.find('\'') != std::string::npos) {
    std::vector<XmlNode> found = SelectNodes(doc.Root(), ProfilePath(name));
    return found.empty() ? XmlNode() : found.front();
  }
  return ed.ProfilesIn(doc).Find(doc, name);
}

XmlNode SelectIn(frmAcctViewEdit& ed, DocumentCursor& cursor, const std::string& name) {
  cursor.GoToChild("");
  XmlNode node = FirstProfileNamed(ed, cursor, name);
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

void UsedColumnNames(XmlNode columns, std::vector<std::string>& names) {
  std::size_t count = 0;
  for (XmlNode column = FirstChildElement(columns, "Column"); column; column = NextSibling(column)) {
    const XmlNode name = column.child("Name");
    if (!name) continue;
    if (names.size() == count) names.emplace_back();
    names[count++] = NodeText(name);
  }
  names.resize(count);
}

}  // namespace cvve
