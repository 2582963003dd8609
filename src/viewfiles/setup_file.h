#pragma once
// The setup file's data sets, columns and tabs, and the two writers that copy
// the chosen columns and tabs into the current profile record.
#include <string>

#include "viewfiles/document_cursor.h"

namespace cvve {

class frmAcctViewEdit;

// The first DataSet element called `data_set`, as the path expression
// "DataSets/DataSet[Name='data_set']" selects it from the setup file's root;
// empty when none.
XmlNode FindDataSet(frmAcctViewEdit& ed, const std::string& data_set);
// Fills cmbDataSet and selects the first entry (which loads its columns and
// filters). A setup file without DataSets shows "Error in LoadDataSets:".
void LoadDataSets(frmAcctViewEdit& ed);
// Fills lstAvailColumns for the current data set, empties lstUsedColumns and
// sets DataSetSQL. An unknown data set shows "Error loading columns:  Data
// Set not found." and leaves the lists as they were.
void LoadColumns(frmAcctViewEdit& ed);
// Fills lstvwTabs from the setup file's Tabs, all unchecked.
void LoadTabs(frmAcctViewEdit& ed);
// The current data set's Column element called `sColumnName`; empty when
// there is none or the name makes the path expression invalid.
XmlNode SelectColumn(frmAcctViewEdit& ed, const std::string& sColumnName);
// Child texts of a column definition ("" when the column is unknown; the
// last of several equal children wins).
std::string ColumnField(frmAcctViewEdit& ed, const std::string& sColumnName);
std::string ColumnFieldMapped(frmAcctViewEdit& ed, const std::string& sColumnName);
std::string ColumnSortField(frmAcctViewEdit& ed, const std::string& sColumnName);
std::string ColumnFieldFormat(frmAcctViewEdit& ed, const std::string& sColumnName);
// Any other child of a column definition by element name (width, alignment).
std::string ColumnAttribute(frmAcctViewEdit& ed, const std::string& sColumnName,
                            const char* element);
// As ColumnAttribute, among the columns of the data set called `data_set`
// rather than the one chosen in cmbDataSet.
std::string ColumnAttributeOf(frmAcctViewEdit& ed, const std::string& data_set,
                              const std::string& sColumnName, const char* element);
// Copy the used columns' definitions and the checked tabs into the current
// profile record; nothing happens without one.
void WriteProfileColumns(frmAcctViewEdit& ed);
void WriteProfileTabs(frmAcctViewEdit& ed);

}  // namespace cvve
