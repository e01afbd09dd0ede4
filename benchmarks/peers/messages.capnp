# The messages of the comparison for Cap'n Proto.
@0xd3a1f0c2b94e7716;

using Cxx = import "/capnp/c++.capnp";
$Cxx.namespace("bench::cap");

struct Position {
  time @0 :Float64;
  namePrefix @1 :Text;
  oldNamePrefix @2 :Text;
  latitude @3 :Float64;
  longitude @4 :Float64;
  oldName @5 :Text;
  name @6 :Text;
  type @7 :UInt16;
  east @8 :Float64;
  north @9 :Float64;
  depth @10 :Float64;
  pitch @11 :Float64;
  roll @12 :Float64;
  trueHeading @13 :Float64;
  gridHeading @14 :Float64;
  convergence @15 :Float64;
}

struct AcousticObservation {
  time @0 :Float64;
  speedOfSound @1 :Float64;
  twoWayMilliseconds @2 :Float64;
  holdCount @3 :UInt32;
  correction @4 :Float64;
  oldFromName @5 :Text;
  oldToName @6 :Text;
  type @7 :UInt16;
  value @8 :Float64;
  statusBits @9 :UInt32;
  timeOut @10 :UInt32;
  fromName @11 :Text;
  toName @12 :Text;
  weight @13 :Float64;
  scaleFactor @14 :Float64;
  residual @15 :Float64;
}

struct ComputedPosition {
  standardDeviation @0 :Float64;
  position @1 :Position;
  observations @2 :List(AcousticObservation);
}

struct Interrogation {
  irf @0 :Int32;
  turnAround @1 :Int32;
  cif @2 :Int32;
  iif @3 :Int32;
  usbl @4 :Int32;
  type @5 :Int32;
  positioningMethod @6 :Int32;
}

struct Sensors {
  depth @0 :Float64;
  pitch @1 :Float64;
  roll @2 :Float64;
  temperature @3 :Float64;
  depthCo @4 :Float64;
  pitchCo @5 :Float64;
  rollCo @6 :Float64;
  temperatureCo @7 :Float64;
}

struct TransponderRange {
  name @0 :Text;
  address @1 :Int16;
  range @2 :Float64;
  twoWayMs @3 :Float64;
  speedOfSound @4 :Float64;
  holds @5 :Int16;
  sensors @6 :Sensors;
}

struct MobileTransponder {
  time @0 :Float64;
  interrogation @1 :Interrogation;
  ranges @2 :List(TransponderRange);
  name @3 :Text;
  oldName @4 :Text;
  address @5 :Int16;
  sensors @6 :Sensors;
}
