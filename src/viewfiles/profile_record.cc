#include "viewfiles/profile_record.h"

#include "component/frm_acct_view_edit.h"

namespace cvve {

namespace {

// Whether the element's text (all text below it) is `text`, without building
// a string for the usual element with one text child.
bool TextEquals(XmlNode element, const std::string& text) {
  XmlNode first = element.first_child();
  if (first && !first.next_sibling() &&
      (first.type() == pugi::node_pcdata || first.type() == pugi::node_cdata)) {
    return text == first.value();
  }
  return NodeText(element) == text;
}

// The first node ProfilePath(name) selects under `root`, found by walking the
// records: the expression is evaluated on every record of a large file,
// which made choosing a profile slower than building the whole tree. A name
// with an apostrophe changes the expression itself, so it still goes
// through the expression.
XmlNode FirstProfileNamed(XmlNode root, const std::string& name) {
  if (!root) return {};
  if (name.find('\'') != std::string::npos) {
    std::vector<XmlNode> found = SelectNodes(root, ProfilePath(name));
    return found.empty() ? XmlNode() : found.front();
  }
  for (XmlNode profiles = root.child("Profiles"); profiles;
       profiles = profiles.next_sibling("Profiles")) {
    for (XmlNode profile = profiles.child("Profile"); profile;
         profile = profile.next_sibling("Profile")) {
      for (XmlNode n = profile.child("Name"); n; n = n.next_sibling("Name")) {
        if (TextEquals(n, name)) return profile;
      }
    }
  }
  return {};
}

XmlNode SelectIn(frmAcctViewEdit& ed, DocumentCursor& cursor, const std::string& name) {
  cursor.GoToChild("");
  XmlNode node = FirstProfileNamed(cursor.CurrentNode(), name);
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
