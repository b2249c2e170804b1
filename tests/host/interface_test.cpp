// The exported interface as a host is compiled against it: shapes, slots and overloads.

#include <gtest/gtest.h>
#include <kalvobase/kalvobase.h>

#include <cstdarg>
#include <string>
#include <type_traits>

namespace {

template <class T>
constexpr bool IsPlainHandle() {
  return sizeof(T) == 2 * sizeof(void*) && std::has_virtual_destructor<T>::value;
}

static_assert(IsPlainHandle<Kalvo_String>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_Exception>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_Lock>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_Event>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_Mutex>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_Semaphore>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_Queue>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_Key>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_Value>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_KValueTable>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_FSM_Object>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_FSM_State>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_FSMService>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_FileStream>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_FileItem>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_FindFiles>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_SocketAddr>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_XIni>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_TcpStream>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_Thread>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_Log>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_Timer>(), "a table and a number");
static_assert(IsPlainHandle<Kalvo_TcpClientHandler>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_TcpServerHandler>(), "a handle is two pointers");
static_assert(IsPlainHandle<Kalvo_UdpHandler>(), "a handle is two pointers");
static_assert(sizeof(Kalvo_SocketHandlerObj) == sizeof(void*), "a stateless base");
static_assert(sizeof(Kalvo_KVPair) == sizeof(Kalvo_QueueObject) + 4 * sizeof(void*), "an item");
static_assert(sizeof(Kalvo_QueueObject) == 3 * sizeof(void*), "the base of all items");
static_assert(sizeof(Kalvo_StringArray) == sizeof(void*), "no virtual table");
static_assert(sizeof(Kalvo_AutoLock) == sizeof(void*), "no virtual table");
static_assert(!std::is_polymorphic<Kalvo_Counter>::value, "no virtual table");
static_assert(sizeof(Kalvo_Long) == 4 && sizeof(Kalvo_ULong) == 4, "32 bits everywhere");
static_assert(sizeof(Kalvo_BaseLock) == sizeof(void*), "a stateless base");
static_assert(sizeof(Kalvo_BaseEvent) == sizeof(void*), "a stateless base");

// Overloads by their exact types.
constexpr Kalvo_String* (Kalvo_String::*kReplaceByte)(char, char) = &Kalvo_String::replace;
constexpr Kalvo_String* (Kalvo_String::*kOverwrite)(int, const char*, int) = &Kalvo_String::replace;
constexpr int (Kalvo_String::*kReplaceText)(int, const char*, const char*) = &Kalvo_String::replace;
constexpr char (Kalvo_String::*kIndex)(int) const = &Kalvo_String::operator[];
constexpr int (Kalvo_String::*kWriteLong)(unsigned long) = &Kalvo_String::Write;
constexpr Kalvo_String* (Kalvo_String::*kAddch)(char, int) = &Kalvo_String::addch;
constexpr int (Kalvo_Mutex::*kInitMutex)(int, char*) = &Kalvo_Mutex::Init;
constexpr unsigned long (Kalvo_Semaphore::*kWait)(int) = &Kalvo_Semaphore::Wait;
constexpr unsigned long (*kHashShort)(unsigned short) = &Kalvo_HashKey;
constexpr unsigned long (*kToValue)(const char*, long&) = &NB_ToValue;
constexpr void (*kInit)() = &klbase_init;
constexpr void (Kalvo_Value::*kSetLong)(unsigned long) = &Kalvo_Value::Set;
constexpr Kalvo_Long* (Kalvo_Value::*kLongs)(unsigned long*) = &Kalvo_Value::GetLongArray;
constexpr Kalvo_Value* (Kalvo_KValueTable::*kInsert)(Kalvo_Key&) = &Kalvo_KValueTable::Insert;
constexpr Kalvo_Value* (Kalvo_KValueTable::*kAt)(int) const = &Kalvo_KValueTable::GetAt;
constexpr unsigned long (*kHashOfKey)(Kalvo_Key) = &Kalvo_HashKey;
constexpr int (Kalvo_FileStream::*kReadLong)(unsigned long&) = &Kalvo_FileStream::Read;
constexpr int (Kalvo_FileStream::*kPutBytes)(unsigned char, int) = &Kalvo_FileStream::Write;
constexpr void (Kalvo_FileStream::*kAttach)(int, int) = &Kalvo_FileStream::Attach;
constexpr int (Kalvo_FileStream::*kVPrintf)(const char*, va_list) = &Kalvo_FileStream::VPrintf;
constexpr const char* (*kRealPath)(const char*, Kalvo_String&) = &Kalvo_FileItem::GetRealPathName;
constexpr int (Kalvo_SocketAddr::*kRawInit)(sockaddr*, int) = &Kalvo_SocketAddr::Init;
constexpr int (*kSend)(int, Kalvo_SocketAddr*, const char*, int) = &Kalvo_SOCK_Send;
constexpr int (Kalvo_TcpStream::*kReadBytes)(char*, int) = &Kalvo_TcpStream::Read;
constexpr int (Kalvo_TcpStream::*kWriteDouble)(long double) = &Kalvo_TcpStream::Write;
constexpr int (Kalvo_XIni::*kReadIniBytes)(const char*, unsigned char*, int) = &Kalvo_XIni::Read;
constexpr int (Kalvo_XIni::*kWriteULong)(const char*, unsigned long, int) = &Kalvo_XIni::Write;
constexpr int (Kalvo_XIni::*kWriteFloat)(const char*, float) = &Kalvo_XIni::Write;
constexpr const char* (Kalvo_XIni::*kVPath)(const char*, va_list) = &Kalvo_XIni::VSetSectionName;
constexpr void (Kalvo_FSM_State::*kRange)(unsigned long, long, long, FSM_Handler,
                                          const char*) = &Kalvo_FSM_State::AddIntMsgHandle;
constexpr void (Kalvo_FSMService::*kAny)(const char*, FSM_Handler,
                                         const char*) = &Kalvo_FSMService::AddStrMsgHandle;

constexpr void (Kalvo_Log::*kTrace)(int, const char*, ...) = &Kalvo_Log::Trace;
constexpr void (Kalvo_Log::*kTraceAt)(long, int, const char*, ...) = &Kalvo_Log::Trace;
[[maybe_unused]] constexpr int (Kalvo_TcpClientHandler::*kSendBytes)(const char*, int) =
    &Kalvo_TcpClientHandler::SendData;
[[maybe_unused]] constexpr int (Kalvo_TcpClientHandler::*kSendString)(Kalvo_String*&) =
    &Kalvo_TcpClientHandler::SendData;
[[maybe_unused]] constexpr int (Kalvo_UdpHandler::*kUdpPrint)(Kalvo_SocketAddr*, const char*,
                                                              va_list) = &Kalvo_UdpHandler::vPrintf;
constexpr int (Kalvo_Thread::*kExitCode)(unsigned long&) = &Kalvo_Thread::GetExitCode;
[[maybe_unused]] constexpr void (Kalvo_Log::*kLogList)(long, int, const char*,
                                                       va_list) = &Kalvo_Log::print;
constexpr void (*kInstall)(KernelDebugFunction) = &SetKalvo_KernelDebugLogFunction;

TEST(Interface, OverloadsAreThere) {
  Kalvo_String s("abc");
  (s.*kReplaceByte)('a', 'x');
  (s.*kOverwrite)(1, "y", -1);
  EXPECT_EQ((s.*kReplaceText)(0, "c", "zz"), 4);
  EXPECT_EQ((s.*kIndex)(3), 'z');
  EXPECT_EQ((s.*kWriteLong)(1), 4);
  EXPECT_EQ((s.*kAddch)('!', 1), &s);
  Kalvo_Mutex mutex;
  EXPECT_EQ((mutex.*kInitMutex)(0, nullptr), 1);
  Kalvo_Semaphore semaphore;
  EXPECT_EQ((semaphore.*kWait)(0), 0xFFFFFFFFul);
  EXPECT_EQ(kHashShort(32), 2u);
  long value = 0;
  EXPECT_EQ(kToValue("\xFF\xFF\xFF\xFE", value), 4u);
  EXPECT_EQ(value, -2);
  kInit();  // a second one changes nothing
  Kalvo_KValueTable table;
  Kalvo_Key key;
  key = 32ul;
  Kalvo_Value* inserted = (table.*kInsert)(key);
  (inserted->*kSetLong)(7);
  EXPECT_EQ(*((table.*kAt)(0)->*kLongs)(nullptr), 7);
  EXPECT_EQ(kHashOfKey(key), 2u);
  Kalvo_FSMService service;
  (service.GetState(nullptr)->*kRange)(1, 2, 3, nullptr, "none");
  (service.*kAny)("any", nullptr, "");
  EXPECT_EQ(service.FinishAndCheck(nullptr), 1);
}

// A host's own stream is told of what it is given through the second slot.
class Told : public Kalvo_FileStream {
 public:
  void Attach(int, int mode) override { told = mode; }
  int told = -1;
};

TEST(Interface, StreamsAndSockets) {
  Told stream;
  (static_cast<Kalvo_FileStream&>(stream).*kAttach)(0, 2);
  EXPECT_EQ(stream.told, 2);
  unsigned long number = 7;
  EXPECT_EQ((stream.*kReadLong)(number), -2);
  EXPECT_EQ((stream.*kPutBytes)('x', 1), -2);
  va_list none{};
  EXPECT_EQ((stream.*kVPrintf)("", none), -1);
  Kalvo_String path;
  EXPECT_STREQ(kRealPath("/a/..", path), "/");
  Kalvo_SocketAddr address;
  EXPECT_EQ((address.*kRawInit)(nullptr, 0), 1);
  EXPECT_EQ(kSend(-1, &address, "", 0), -1);
  Kalvo_TcpStream tcp;
  char c;
  EXPECT_EQ((tcp.*kReadBytes)(&c, 1), -1);
  EXPECT_EQ((tcp.*kWriteDouble)(1), 8);
  Kalvo_XIni ini;
  unsigned char byte = 1;
  EXPECT_EQ((ini.*kReadIniBytes)("none", &byte, 1), 0);
  EXPECT_EQ((ini.*kWriteULong)("k", 1, 0), 1);
  EXPECT_EQ((ini.*kWriteFloat)("k", 1), 1);
  EXPECT_STREQ((ini.*kVPath)("", none), "");
}

// Virtual calls land in the slots of the base.
class TracingLock : public Kalvo_BaseLock {
 public:
  void Lock() override { trace += 'L'; }
  void Unlock() override { trace += 'U'; }
  std::string trace;
};

class TracingEvent : public Kalvo_BaseEvent {
 public:
  int Set() override { return 11; }
  int Reset() override { return 12; }
  int Wait(unsigned long ms) override { return static_cast<int>(ms); }
};

class TypedItem : public Kalvo_QueueObject {
 public:
  int GetType() override { return 42; }
  const char* GetTypename(Kalvo_String* out) override { return out->strcpy("typed")->c_str(); }
};

TEST(Interface, VirtualCalls) {
  TracingLock lock;
  { Kalvo_AutoLock guard(&lock); }
  EXPECT_EQ(lock.trace, "LU");
  TracingEvent event;
  Kalvo_BaseEvent* base = &event;
  EXPECT_EQ(base->Set() + base->Reset() + base->Wait(7), 30);
  Kalvo_Queue queue(0, 0);
  queue.AddItemAtTail(new TypedItem);
  Kalvo_String name;
  EXPECT_EQ(queue.PeekHead(0)->GetType(), 42);
  EXPECT_STREQ(queue.PeekHead(0)->GetTypename(&name), "typed");
}

TEST(Interface, ThreadsLogsAndTimers) {
  kInstall(nullptr);
  Kalvo_Log logs[2];
  (logs[0].*kTrace)(1, "before Init %d", 1);
  (logs[0].*kTraceAt)(0, 1, "before Init");
  Kalvo_String text;
  EXPECT_STREQ(logs[1].GetDirInfo(),
               text.sprintf("%s/log_files", Kalvo_GetExePath(&text))->c_str());
  Kalvo_Timer timer;
  Kalvo_Timer copy(timer);
  EXPECT_EQ(copy.SetRepeatTimer(0, 1, 0, 0, 0, nullptr), 0ul);
  // The second of two handles may still be destroyed.
  alignas(Kalvo_Thread) unsigned char storage[sizeof(Kalvo_Thread)];
  Kalvo_Thread thread([](void*) { return 0ul; }, nullptr, 0, nullptr, nullptr, 0);
  Kalvo_Thread* shared = new (storage) Kalvo_Thread(thread);
  unsigned long code = 5;
  EXPECT_EQ((shared->*kExitCode)(code), 0);
  EXPECT_EQ(shared->GetId(), thread.GetId());
  shared->~Kalvo_Thread();
}

TEST(Interface, ArraysAndSharedHandles) {
  Kalvo_Event events[2];
  EXPECT_EQ(events[1].Wait(0), 0);
  Kalvo_Queue queues[2];
  EXPECT_EQ(queues[0].WaitData(0), 258);
  // Two handles of one event. Assignment leaves what the left side had to nobody, so it is
  // kept here; and only one of the two is destroyed.
  alignas(Kalvo_Event) unsigned char storage[sizeof(Kalvo_Event)];
  Kalvo_Event* shared = new (storage) Kalvo_Event(events[0]);
  events[0].Reset();
  EXPECT_EQ(shared->Wait(0), 258);
  *shared = events[1];
  EXPECT_EQ(shared->Wait(0), 0);
}

}  // namespace
