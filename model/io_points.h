// I/O points of DCIO boards: the point bases and their kinds, the two typed point lists and the
// pair of them that a board owns.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "model/listing.h"
#include "model/owning_list.h"

namespace QtSts {

// An input point. Its class says what is wired to it.
class STATUS_API BaseInputType : public CListedStatus {
 public:
  std::uint32_t State = 0;  // 1: active; written through Set
  std::int32_t Index = 0;   // 1-based number on the board
  std::string Label;

  virtual void Set(bool active) { State = active ? 1 : 0; }
  virtual bool Get() { return State != 0; }

  static const ClassInfo Class;
};

// An output point. Its class says what it drives.
class STATUS_API BaseOutputType : public CListedStatus {
 public:
  std::uint32_t SpareWord = 0;
  // Deliberately the inverse of the logical state, 1 for off and 0 for on: Set and Get translate.
  std::uint32_t StoredState = 1;
  std::int32_t Index = 0;  // 1-based number on the board
  std::string Label;

  virtual void Set(bool on) { StoredState = on ? 0 : 1; }
  virtual bool Get() { return StoredState == 0; }
  virtual const char* GetNodeName() { return Class.Name; }

  static const ClassInfo Class;
};

// The kinds of inputs. The spare word of each starts at 1 and is not used.

class STATUS_API GeneralPurposeInputType : public BaseInputType {
 public:
  std::uint32_t SpareWord = 1;

  static const ClassInfo Class;
};

class STATUS_API AirflowSensorInputType : public BaseInputType {
 public:
  std::uint32_t SpareWord = 1;

  static const ClassInfo Class;
};

class STATUS_API CDoorSensorInputType : public BaseInputType {
 public:
  std::uint32_t SpareWord = 1;

  static const ClassInfo Class;
};

class STATUS_API SurgeSuppressorInputType : public BaseInputType {
 public:
  std::uint32_t SpareWord = 1;

  static const ClassInfo Class;
};

class STATUS_API CIntakeFanStatusRelayInputType : public BaseInputType {
 public:
  std::uint32_t SpareWord = 1;

  static const ClassInfo Class;
};

class STATUS_API CFrontFanStatusRelayInputType : public BaseInputType {
 public:
  std::uint32_t SpareWord = 1;

  static const ClassInfo Class;
};

class STATUS_API CPixelFanStatusRelayInputType : public BaseInputType {
 public:
  std::uint32_t SpareWord = 1;

  static const ClassInfo Class;
};

class STATUS_API CFanPowerSenseInputType : public BaseInputType {
 public:
  std::uint32_t SpareWord = 1;

  static const ClassInfo Class;
};

class STATUS_API CPowerSupplyStatusRelayInputType : public BaseInputType {
 public:
  std::uint32_t SpareWord = 1;

  static const ClassInfo Class;
};

class STATUS_API CMaintHeaterStatusRelayInputType : public BaseInputType {
 public:
  std::uint32_t SpareWord = 1;

  static const ClassInfo Class;
};

class STATUS_API CHeaterStatusRelayInputType : public BaseInputType {
 public:
  std::uint32_t SpareWord = 1;

  static const ClassInfo Class;
};

// The kinds of outputs. The node name of each is its name in the listing.

class STATUS_API CIntakeFanOutputType : public BaseOutputType {
 public:
  const char* GetNodeName() override { return Class.Name; }

  static const ClassInfo Class;
};

class STATUS_API CPixelFanOutputType : public BaseOutputType {
 public:
  const char* GetNodeName() override { return Class.Name; }

  static const ClassInfo Class;
};

class STATUS_API CFrontFanOutputType : public BaseOutputType {
 public:
  const char* GetNodeName() override { return Class.Name; }

  static const ClassInfo Class;
};

// Deliberately the one node name that is not the class name: "MaintenanceHeaterOutputType".
class STATUS_API CMaintHeaterOutputType : public BaseOutputType {
 public:
  const char* GetNodeName() override { return Class.Name; }

  static const ClassInfo Class;
};

class STATUS_API CHeaterOutputType : public BaseOutputType {
 public:
  const char* GetNodeName() override { return Class.Name; }

  static const ClassInfo Class;
};

class STATUS_API CGeneralPurposeOutputType : public BaseOutputType {
 public:
  const char* GetNodeName() override { return Class.Name; }

  static const ClassInfo Class;
};

class STATUS_API CAuxiliaryOutputType : public BaseOutputType {
 public:
  const char* GetNodeName() override { return Class.Name; }

  static const ClassInfo Class;
};

class STATUS_API CFaultOkLedOutputType : public BaseOutputType {
 public:
  const char* GetNodeName() override { return Class.Name; }

  static const ClassInfo Class;
};

class STATUS_API CCurrentMessageOutputType : public BaseOutputType {
 public:
  const char* GetNodeName() override { return Class.Name; }

  static const ClassInfo Class;
};

// The points of one kind on a board, in order of addition. Owns the points that it accepted.
template <class T>
class PointList {
 public:
  // NOLINTBEGIN(readability-identifier-naming): the names of the standard library
  using iterator = ListIterator<T, T*>;
  using const_iterator = ListIterator<const T, T*>;
  // NOLINTEND(readability-identifier-naming)

  std::vector<T*> Points;
  bool OpenEnded;  // indices above the maximum are accepted
  std::uint32_t MaximumIndex;

  // An open-ended list.
  PointList() : OpenEnded(true), MaximumIndex(0) {}
  // The list of a board with a fixed number of points.
  explicit PointList(std::uint32_t maximum) : OpenEnded(false), MaximumIndex(maximum) {}
  PointList(const PointList&) = delete;
  PointList& operator=(const PointList&) = delete;

  // Deletes the points from front to back, each distinct one once.
  virtual ~PointList() { owning::DestroyEachOnce(Points, &owning::Delete<T>); }

  // Whether the list would take `point`: its index is at least 1 and within the maximum, unless the
  // list is open-ended.
  virtual bool IsValid(T* point) const {
    return point != nullptr && point->Index > 0 &&
           (OpenEnded || static_cast<std::uint32_t>(point->Index) <= MaximumIndex);
  }

  // Appends `point`; true: the list owns it now. A refused point stays the caller's. Points with
  // the same index may stand side by side.
  virtual bool Add(T* point) {
    if (!IsValid(point)) {
      return false;
    }
    Points.push_back(point);
    return true;
  }

  // Sets `*point` to the first point with this index; false, and `*point` as it was, without one.
  virtual bool Get(int index, T** point) {
    for (T* candidate : Points) {
      if (candidate->Index == index) {
        *point = candidate;
        return true;
      }
    }
    return false;
  }

  std::size_t size() const { return Points.size(); }
  bool empty() const { return Points.empty(); }

  // The points from front to back, those of a list that is const being const.
  iterator begin() { return iterator(Points.data()); }
  iterator end() { return iterator(Points.data() + Points.size()); }
  const_iterator begin() const { return const_iterator(Points.data()); }
  const_iterator end() const { return const_iterator(Points.data() + Points.size()); }
};

class STATUS_API InputListType : public PointList<BaseInputType> {
 public:
  using PointList::PointList;

  static const ClassInfo Class;
};

class STATUS_API OutputListType : public PointList<BaseOutputType> {
 public:
  using PointList::PointList;

  static const ClassInfo Class;
};

// The input and output points of a board. A missing list answers false to everything.
class STATUS_API IOList {
 public:
  std::unique_ptr<InputListType> Inputs;
  std::unique_ptr<OutputListType> Outputs;

  IOList() = default;
  IOList(std::unique_ptr<InputListType> inputs, std::unique_ptr<OutputListType> outputs)
      : Inputs(std::move(inputs)), Outputs(std::move(outputs)) {}
  IOList(const IOList&) = delete;
  IOList& operator=(const IOList&) = delete;
  virtual ~IOList() {  // inputs go before outputs
    Delete(Inputs);
    Delete(Outputs);
  }

  virtual bool Add(BaseInputType* point) { return Inputs && Inputs->Add(point); }
  virtual bool Add(BaseOutputType* point) { return Outputs && Outputs->Add(point); }
  virtual bool Get(int index, BaseInputType** point) { return Inputs && Inputs->Get(index, point); }
  virtual bool Get(int index, BaseOutputType** point) {
    return Outputs && Outputs->Get(index, point);
  }

  static const ClassInfo Class;

 private:
  // The pointer is cleared after its list is gone, not before.
  template <class List>
  static void Delete(std::unique_ptr<List>& list) {
    delete list.get();
    static_cast<void>(list.release());
  }
};

// The virtual functions of points are not const, but change nothing. The same for points that are
// const:

// What Get says: whether the input is active, whether the output is on.
STATUS_API bool IsActive(const BaseInputType& point);
STATUS_API bool IsOn(const BaseOutputType& point);

// The name of the point's element in the document, "DoorSensorInputType": that of its class, or of
// the nearest listed one. An output of a class that is not listed has the name that GetNodeName
// gives, where XML can have it and no listed class has it. Lives as long as the process.
STATUS_API const char* NodeNameOf(const BaseInputType& point);
STATUS_API const char* NodeNameOf(const BaseOutputType& point);

// The first point with this index, which is its number on the board; null without one.
STATUS_API const BaseInputType* FindInput(const IOList& points, int index);
STATUS_API const BaseOutputType* FindOutput(const IOList& points, int index);

}  // namespace QtSts
