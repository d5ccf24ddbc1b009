#include "app/ColumnInfo.h"

#include "browser/Catalogues.h"
#include "common/BDBSWEEP.h"
#include "services/MessageBoxes.h"

int LoadColumnInfo(BDBSWEEP& state, MessageBoxes& boxes) {
  std::optional<TextTable> columns = ReadColumnInfo(state.gDatabase.get(), state.gUser, state.gInfoTable,
                                                    ColumnMasterSettings(*state.gRegistry), state.gNameMasters);
  if (!columns) {
    boxes.show(QStringLiteral("サーバーの接続に失敗しました。"), QStringLiteral("エラー"), MessageBoxes::Buttons::Ok,
               MessageBoxes::Icon::Critical);
    return 0;
  }
  state.gColumnInfo = std::move(*columns);
  return state.gColumnInfo.upper();
}
