/* cvViewEdit for hosts written in other languages. Every entry returns 0 on
 * success and non-zero on failure; cvViewEdit_LastError then says why. The
 * editor runs on the default host settings (the demo data, then the settings
 * file; see cvviewedit/host_settings.h) and opens its window modally; without
 * a display the view entries fail and say so. */
#ifndef CVVIEWEDIT_C_API_H_
#define CVVIEWEDIT_C_API_H_

#ifdef __cplusplus
extern "C" {
#endif

typedef struct cvViewEdit cvViewEdit;

/* NULL when the component cannot be made. */
cvViewEdit* cvViewEdit_Create(void);
void cvViewEdit_Destroy(cvViewEdit* component);
int cvViewEdit_ViewEdit(cvViewEdit* component, const char* views_file,
                        const char* defaults_file, const char* setup_file);
int cvViewEdit_AcctViewEdit(cvViewEdit* component);
int cvViewEdit_InvViewEdit(cvViewEdit* component);
int cvViewEdit_EODViewEdit(cvViewEdit* component);
int cvViewEdit_ReportEdit(cvViewEdit* component);
/* The last failure's description; "" after a success. Owned by the component. */
const char* cvViewEdit_LastError(const cvViewEdit* component);
/* The library's version, "MAJOR.MINOR.PATCH". */
const char* cvViewEdit_Version(void);

#ifdef __cplusplus
}
#endif

#endif /* CVVIEWEDIT_C_API_H_ */
