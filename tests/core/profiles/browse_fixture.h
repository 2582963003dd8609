#pragma once
// A small file set shared by the tree, loader, filter-list and variables
// tests: four folders (one hidden), system, customised and user profiles,
// per-user profiles, and data sets with and without filter definitions.
#include <string>

namespace cvve::testing {

inline const std::string kBrowseSetup = R"(<ViewSetup>
  <RootNodes>
    <Root><Index>0</Index><Name>System Views</Name></Root>
    <Root><Index>1</Index><Name>Collections</Name></Root>
    <Root><Index>99</Index><Name>Hidden</Name></Root>
    <Root><Index>2</Index><Name>Sales</Name></Root>
  </RootNodes>
  <DataSets>
    <DataSet><Name>Accounts</Name>
      <SQL>SELECT %FIELDLIST% FROM ACCTS WHERE 1=1 %ANDWHERELIST% %ORDERLIST%</SQL>
      <Columns>
        <Column><Name>Account</Name><Field>AcctNum</Field><SortField>ACCTS.AcctNum</SortField></Column>
        <Column><Name>Balance</Name><Field>Balance</Field><SortField>ACCTS.Balance</SortField></Column>
        <Column><Name>Customer</Name><Field>Cust</Field><SortField>ACCTS.Cust</SortField></Column>
        <Column><Name>Due Date</Name><Field>Due</Field><SortField>ACCTS.Due</SortField></Column>
      </Columns>
      <Filters>
        <Filter><Name>Balance over</Name><Index>1</Index><InputNum>1</InputNum><Label1>more than</Label1><Label2>unused</Label2><SQL>ACCTS.Balance &gt; %DATA1%</SQL><Group>1</Group><Defaults>30</Defaults></Filter>
        <Filter><Name>Due between</Name><Index>2</Index><InputNum>2</InputNum><Label1>from</Label1><Label2>to</Label2><SQL>ACCTS.Due BETWEEN #%DATA1%# AND #%DATA2%#</SQL><Group>2</Group><Defaults>01/01/2020|12/31/2020</Defaults></Filter>
        <Filter><Name>Active only</Name><Index>3</Index><InputNum>0</InputNum><Label1>is</Label1><Label2>and</Label2><SQL>ACCTS.Active=1</SQL><Group>3</Group><Defaults/></Filter>
        <Filter><Name>Bare</Name><Index>4</Index></Filter>
      </Filters>
    </DataSet>
    <DataSet><Name>Inventory</Name><SQL>SELECT %FIELDLIST% FROM INV %ORDERLIST%</SQL>
      <Columns>
        <Column><Name>Stock</Name><SortField>INV.Stock</SortField></Column>
        <Column><Name>Make</Name><SortField>INV.Make</SortField></Column>
      </Columns>
      <Filters>
        <Filter><Name>Make is</Name><Index>1</Index><InputNum>1</InputNum><Label1>=</Label1><SQL>INV.Make='%DATA1%'</SQL><Group>0</Group><Defaults></Defaults></Filter>
      </Filters>
    </DataSet>
    <DataSet><Name>NoFilters</Name><SQL>x</SQL><Columns/></DataSet>
    <DataSet><Name>EmptyFilters</Name><SQL>y</SQL><Columns/><Filters/></DataSet>
  </DataSets>
  <Tabs>
    <Tab><Index>1</Index><Name>General</Name></Tab>
    <Tab><Index>2</Index><Name>Payments</Name></Tab>
    <Tab><Index>3</Index><Name>Notes</Name></Tab>
    <Tab><Index>4</Index><Name>History</Name></Tab>
  </Tabs>
</ViewSetup>)";

// System profiles. "Past Due" is customised in the views file below.
inline const std::string kBrowseDefaults = R"(<Views><Profiles>
  <Profile><Name>Past Due</Name><DataSet>Accounts</DataSet><AcctViewType>1</AcctViewType>
    <FilterType>0</FilterType><SQL></SQL><SortBy>Balance</SortBy><SortASCDESC>DESC</SortASCDESC>
    <Columns><Column><Name>Account</Name></Column><Column><Name>Balance</Name></Column></Columns>
    <Tabs>1,3</Tabs><DoTotals>0</DoTotals></Profile>
  <Profile><Name>All Accounts</Name><DataSet>Accounts</DataSet><AcctViewType>0</AcctViewType>
    <FilterType>0</FilterType><SQL>CQ:SELECT stored</SQL>
    <Columns><Column><Name>Account</Name></Column></Columns>
    <FilterChecks><Filter><Index>1</Index><Name>Balance over</Name><Value>True</Value><Data1>45</Data1><Data2/></Filter>
      <Filter><Index>2</Index><Name>Due between</Name><Value>True</Value><Data1></Data1><Data2>06/30/2020</Data2></Filter></FilterChecks>
  </Profile>
  <Profile><Name>My Accounts</Name><DataSet>Accounts</DataSet><AcctViewType>99</AcctViewType>
    <SQL>SELECT * FROM ACCTS WHERE %USERWHERE%</SQL></Profile>
  <Profile><Name>Aged Stock</Name><DataSet>Inventory</DataSet><AcctViewType>2</AcctViewType>
    <FilterType>1</FilterType><SQL>CQ:SELECT aged</SQL></Profile>
</Profiles></Views>)";

inline const std::string kBrowseViews = R"(<Views><Profiles>
  <Profile><Name>Past Due</Name><DataSet>Inventory</DataSet><AcctViewType>2</AcctViewType>
    <FilterType>1</FilterType><SQL>CQ:never read</SQL>
    <SortBy>Customer</SortBy><SortASCDESC>ASC</SortASCDESC><SortBy2>Nowhere</SortBy2><SortASCDESC2>SIDEWAYS</SortASCDESC2>
    <DoTotals>1</DoTotals><DoAverages>1</DoAverages><PageOrientation>1</PageOrientation><PageSize>7</PageSize>
    <Columns><Column><Name>Customer</Name></Column><Column><Name>Due Date</Name></Column></Columns>
    <Tabs>2</Tabs></Profile>
  <Profile><Name>Mine</Name><DataSet>Accounts</DataSet><AcctViewType>2</AcctViewType>
    <FilterType>1</FilterType><SQL>CQ:SELECT custom</SQL>
    <FilterChecks><Filter><Index>3</Index><Name>Active only</Name><Value>True</Value><Data1/><Data2/></Filter></FilterChecks>
    <SortBy>Account</SortBy><SortASCDESC>DESC</SortASCDESC>
    <Columns><Column><Name>Account</Name></Column><Column><Name>Gone Column</Name></Column></Columns>
    <Tabs>1,3</Tabs>
    <Var0Caption>Start Date:</Var0Caption><Var0Type>Date</Var0Type><Var0Name>START_DATE</Var0Name>
    <Var1Caption>End Date:</Var1Caption><Var1Type>Date</Var1Type><Var1Name>END_DATE</Var1Name>
    <Var2Caption></Var2Caption><Var2Type>Text</Var2Type><Var2Name>DEALER</Var2Name></Profile>
  <Profile><Name>Loose</Name><DataSet>Accounts</DataSet><AcctViewType></AcctViewType></Profile>
  <Profile><Name>Parked</Name><DataSet>Accounts</DataSet><AcctViewType>99</AcctViewType></Profile>
  <Profile><Name>Orphan</Name><DataSet>Accounts</DataSet><AcctViewType>7</AcctViewType></Profile>
  <Profile><Name></Name><AcctViewType>2</AcctViewType></Profile>
  <Profile><Name>Team</Name><DataSet>Accounts</DataSet><AcctViewType>1</AcctViewType>
    <SQL>SELECT x WHERE %USERWHERE%</SQL></Profile>
</Profiles></Views>)";

}  // namespace cvve::testing
