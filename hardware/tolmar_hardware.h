// The hardware probe: what the controller itself reports about its health.
#pragma once

#include <string>

#include "collector/state/export.h"

namespace QtSts {
class CStatus;
}

// Reads devices, driver dumps, files and interfaces into a document, one probe per source.
//
// A probe returns 0 when it is done and 1 when a source is missing; what it gathered before that
// stays written, everything else keeps its value. Without a document it returns 1 and does nothing.
// Paths stand in hardware/paths.h, device requests in hardware/requests.h. Holds no resource and no
// state between cycles. Used on the thread of the cycle.
class COLLECTOR_API CTolmarHardware {
 public:
  QtSts::CStatus* m_pStatus = nullptr;  // the document being filled, not owned
  bool m_bLogTrackerPixel = true;       // OutputPort may report a blanked output to the system log

  CTolmarHardware();
  virtual ~CTolmarHardware();

  // Empties the lists of `status` and runs all probes in their fixed order; none of them stops the
  // others. Always 0. Does nothing without a document.
  int UpdateStatus(QtSts::CStatus* status);

  // Value of one hexadecimal digit; any other byte is its own value.
  unsigned char Char2Hex(unsigned char c);

  // Value of the hexadecimal number in `text`: after the first "0x" anywhere in it, without one
  // after the first "0X", else from its start; up to a blank or the end of a line.
  unsigned long long htoi(char* text);

  // State of the compositor. Creates none when the display driver has no answer.
  int Compositor();

  // Frame rate, output level, statistics, scaler output area and status flags of an output port;
  // a blanked output is reported to the system log at most once an hour.
  int OutputPort(int port);

  // Content limits of an output port.
  int ContentLimit(unsigned int port);

  // The player's graphics and the DVI source: areas, frequencies, statistics, signal, routing.
  int InputGraphic();
  int InputDVI();

  // Hardware identifiers, product family and serial number.
  int IDs();

  // The uuid file, with its line feed if it has one.
  int GUID();

  // Memory in kB, and the uptime as an ISO 8601 duration. Always 0.
  int SystemMemoryKB();

  // Size of the root file system and what is free of it, in kB if its blocks have 4096 bytes.
  // Always 0.
  int SystemStorageKB();

  // One device for each interface that runs and has a link, with addresses, gateway and counters.
  // 1 when the interfaces cannot be listed or an address cannot be written as text.
  int Network();

  // The name servers; the list keeps its servers when there is no resolver file.
  int DNS();

  // Version of the player's distribution, to the end of its line. Always 0.
  int FirmwareVersion();

  // Version of the display's firmware. 1, too, when no package has one.
  int DisplayFirmwareVersion();

  // Gateway of the default route through `interface`: 0, else 1 and "0.0.0.0".
  int GetGateway(const char* interface, std::string* gateway);

  // -1: the link is down. 0: it is up, or there is nothing to read. 1: the carrier file exists but
  // cannot be opened, which deliberately does not count as down.
  int CheckHardwareLink(const char* interface);

  // How often the link of `interface` went up or down; -1 when there is no count.
  int NetworkLinkTransitionCount(const char* interface);

  // Receive and transmit errors of `interface`: 0 when it is not listed, -1 without a list.
  int NetworkLinkErrorCount(const char* interface);
};
