/* cvViewEdit for hosts written in other languages. Every entry returns 0 on
 * success and non-zero on failure; cvViewEdit_LastError then says why. The
 * editor runs on the default host services (CVVE_DATA_DIR or the demo data)
 * and the screen registered by the window library, else without a screen. */
#ifndef CVVIEWEDIT_C_API_H_
#define CVVIEWEDIT_C_API_H_

#ifdef __cplusplus
extern "C" {
#endif

typedef struct cvViewEdit cvViewEdit;

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

#ifdef __cplusplus
}
#endif

#endif /* CVVIEWEDIT_C_API_H_ */
