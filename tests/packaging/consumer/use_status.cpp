// A consumer of documents: needs libstatus only.
#include <model/xml.h>

#include <iostream>

int main(int argc, char** argv) {
  QtSts::XmlError error;
  const auto status = QtSts::ReadDocumentFile(argc > 1 ? argv[1] : "", &error);
  if (status == nullptr) {
    std::cerr << error.Text() << '\n';
    return 1;
  }
  std::cout << "sensors: " << status->Sensors.Count() << '\n';
  return 0;
}
