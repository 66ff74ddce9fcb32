// The least a host does: loads an inspection file, with its modifications applied, counts its data groups and closes it again.
//   minimal_host FILE
#include <filesystem>
#include <iostream>
#include <memory>

#include "utdata/fcont.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: minimal_host FILE\n";
    return 2;
  }
  CFCont container;
  const std::wstring path = std::filesystem::path(argv[1]).wstring();
  const std::unique_ptr<CFContTypeFileDescr> file(container.FileLoad(path.c_str(), nullptr, nullptr));
  if (!file) {
    std::cerr << SCFile::file_LastError() << '\n';
    return 1;
  }
  std::cout << argv[1] << ": " << file->data.GetCount() << " data groups\n";
  utdata::DeleteGroups(*file);
  container.FileClose(file.get());
}
