// The same load as rows of a database table: one transaction, synced before it counts.
#ifdef UTDATA_BENCH_PEERS
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstring>

#include "bench/channels.h"

namespace utdata::bench {
namespace {

namespace fs = std::filesystem;

constexpr int kColumns = static_cast<int>(Row::wholes + Row::reals + Row::texts);

/// Calls `use` with a statement made of `text` and closes everything; false when any step failed.
template <class Use>
bool WithStatement(sqlite3* database, const std::string& text, Use use) {
  sqlite3_stmt* statement = nullptr;
  const bool done =
      sqlite3_prepare_v2(database, text.c_str(), -1, &statement, nullptr) == SQLITE_OK &&
      use(statement);
  sqlite3_finalize(statement);
  return done;
}

bool Execute(sqlite3* database, const char* text) {
  return sqlite3_exec(database, text, nullptr, nullptr, nullptr) == SQLITE_OK;
}

bool InsertRow(sqlite3_stmt* statement, const Row& row) {
  int column = 1;
  for (std::uint32_t value : row.whole) sqlite3_bind_int64(statement, column++, value);
  for (float value : row.real) sqlite3_bind_double(statement, column++, static_cast<double>(value));
  for (const auto& text : row.text) sqlite3_bind_text(statement, column++, text, -1, SQLITE_STATIC);
  return sqlite3_step(statement) == SQLITE_DONE && sqlite3_reset(statement) == SQLITE_OK;
}

bool WriteRows(const fs::path& path, const std::vector<Row>& rows) {
  fs::remove(path);
  std::string create = "CREATE TABLE channel (";
  std::string insert = "INSERT INTO channel VALUES (";
  for (int column = 0; column < kColumns; ++column) {
    create += (column ? ", c" : "c") + std::to_string(column);
    insert += column ? ", ?" : "?";
  }
  sqlite3* database = nullptr;
  const bool done = sqlite3_open(path.c_str(), &database) == SQLITE_OK &&
                    Execute(database, "PRAGMA synchronous = FULL") &&
                    Execute(database, (create + ")").c_str()) && Execute(database, "BEGIN") &&
                    WithStatement(database,
                                  insert + ")",
                                  [&](sqlite3_stmt* statement) {
                                    for (const Row& row : rows) {
                                      if (!InsertRow(statement, row)) return false;
                                    }
                                    return true;
                                  }) &&
                    Execute(database, "COMMIT");
  return sqlite3_close(database) == SQLITE_OK && done;
}

Row ReadRow(sqlite3_stmt* statement) {
  Row row{};
  int column = 0;
  for (std::uint32_t& value : row.whole)
    value = static_cast<std::uint32_t>(sqlite3_column_int64(statement, column++));
  for (float& value : row.real)
    value = static_cast<float>(sqlite3_column_double(statement, column++));
  for (auto& text : row.text) {
    std::strncpy(text,
                 reinterpret_cast<const char*>(sqlite3_column_text(statement, column++)),
                 Row::textSize - 1);
  }
  return row;
}

std::vector<std::unique_ptr<Channel>> LoadRows(const fs::path& path) {
  std::vector<std::unique_ptr<Channel>> channels;
  sqlite3* database = nullptr;
  if (sqlite3_open(path.c_str(), &database) == SQLITE_OK) {
    WithStatement(database, "SELECT * FROM channel ORDER BY rowid", [&](sqlite3_stmt* statement) {
      while (sqlite3_step(statement) == SQLITE_ROW) channels.push_back(FromRow(ReadRow(statement)));
      return true;
    });
  }
  sqlite3_close(database);
  return channels;
}

void SqliteWrite(benchmark::State& state) {
  const Workplace workplace;
  const auto rows = Rows();
  for (auto _ : state) {
    if (!WriteRows(workplace.File("load.db"), rows))
      return state.SkipWithError("the database cannot be written");
  }
  if (!IsTheLoad(LoadRows(workplace.File("load.db"))))
    state.SkipWithError("what was written is not the load");
  PerGroup(state);
}
BENCHMARK(SqliteWrite)->Unit(benchmark::kMillisecond);

void SqliteLoad(benchmark::State& state) {
  const Workplace workplace;
  if (!WriteRows(workplace.File("load.db"), Rows()) ||
      !IsTheLoad(LoadRows(workplace.File("load.db")))) {
    return state.SkipWithError("what was written is not the load");
  }
  for (auto _ : state) {
    auto channels = LoadRows(workplace.File("load.db"));
    state.PauseTiming();
    channels.clear();
    state.ResumeTiming();
  }
  PerGroup(state);
}
BENCHMARK(SqliteLoad)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace utdata::bench
#endif
