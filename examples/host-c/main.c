/* A C host: the account views, then the inventory views, each in its own
 * modal call on the same component. */
#include <cvviewedit/c_api.h>
#include <stdio.h>

int main(void) {
  cvViewEdit* editor = cvViewEdit_Create();
  if (!editor) return 1;
  printf("cvViewEdit %s\n", cvViewEdit_Version());
  int failed = cvViewEdit_AcctViewEdit(editor) || cvViewEdit_InvViewEdit(editor);
  if (failed) {
    fprintf(stderr, "the editor failed: %s\n", cvViewEdit_LastError(editor));
  } else {
    printf("AcctViewEdit and InvViewEdit returned\n");
  }
  cvViewEdit_Destroy(editor);
  return failed;
}
