#pragma once

#include <QGroupBox>

#include <array>

class QLabel;
class QLineEdit;

// The frame of filter rows, one per key column: a mode label the user clicks through
// "全て" → "のみ" → "と" → "～", and the value boxes that mode needs. Row i belongs to key i + 1.
class FilterPanel final : public QGroupBox {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FilterPanel)

public:
  static constexpr int RowCount = 10;

  explicit FilterPanel(QWidget* parent = nullptr);

  QString mode(int row) const;
  QString value1(int row) const;
  QString value2(int row) const;
  QLineEdit* box1(int row) const { return m_txt1[size_t(row)]; }
  QLineEdit* box2(int row) const { return m_txt2[size_t(row)]; }

  // A new key's row: mode "全て", no values, input limited to maxLength characters (0: no limit).
  void startRow(int row, int maxLength);
  void hideRow(int row);
  void hideAll();
  // Row `from` takes the place of the row before it: values, visibility, lengths and mode.
  void moveRowUp(int from);

  // Puts row i at top + i * pitch (pixels inside the frame), each row pitch high.
  void placeRows(int left, int top, int pitch, int boxWidth, int labelWidth, int gap);

Q_SIGNALS:
  // A value box was double-clicked: the user wants to pick its value from the column's data.
  void pickValue(int row, QLineEdit* box);

protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  void setMode(int row, const QString& mode);

  std::array<QLabel*, RowCount> m_lblX{};
  std::array<QLineEdit*, RowCount> m_txt1{};
  std::array<QLineEdit*, RowCount> m_txt2{};
};
