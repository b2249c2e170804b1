// The records of an engine and their queue for connecting.

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "net/mp_socket_pool.h"

namespace {

class SocketPool : public testing::Test {
 protected:
  ~SocketPool() override {
    pool_.reset();
    platform::port_destroy(port_);
  }

  platform::CompletionPort* const port_ = platform::port_create();
  MP_ConnectQueue connectQueue_;
  std::unique_ptr<MP_SocketPool> pool_ = std::make_unique<MP_SocketPool>(port_, &connectQueue_);
};

TEST_F(SocketPool, IdsNameOneLifeOfARecord) {
  MP_SocketItem* const item = pool_->Alloc();
  const std::uint32_t first = item->id;
  EXPECT_EQ(first, 1u);
  EXPECT_EQ(pool_->Find(first), item);
  for (const std::uint32_t other : {0u, 2u, 0x00010001u, 0xFFFF0001u}) {
    EXPECT_EQ(pool_->Find(other), nullptr) << other;
  }
  pool_->Free(item);
  pool_->Free(item);
  EXPECT_EQ(pool_->Find(first), nullptr);
  EXPECT_EQ(pool_->Find(0), nullptr);

  // Generations go from 65,535 to 1.
  std::uint32_t last = first;
  for (int i = 2; i <= 65536; ++i) {
    ASSERT_EQ(pool_->Alloc(), item);
    last = item->id;
    ASSERT_EQ(last, i < 65536 ? static_cast<std::uint32_t>(i) : 1u);
    pool_->Free(item);
  }
  EXPECT_EQ(last, first);
}

TEST_F(SocketPool, HoldsAsManyAsThereAreIds) {
  std::vector<MP_SocketItem*> items;
  for (int i = 0; i < MP_SocketPool::kMaxItems; ++i) items.push_back(pool_->Alloc());
  EXPECT_EQ(items.back()->id >> 16, 0xFFFFu);
  EXPECT_EQ(pool_->Alloc(), nullptr);
  pool_->Free(items[500]);
  EXPECT_EQ(pool_->Alloc(), items[500]);
  EXPECT_EQ(pool_->Find(items[500]->id), items[500]);
  EXPECT_EQ(pool_->Alloc(), nullptr);
}

TEST_F(SocketPool, DelaysPushBackThoseBehind) {
  const auto order = [this](std::vector<int> delays) {
    std::vector<MP_SocketItem*> items;
    for (const int delay : delays) {
      items.push_back(pool_->Alloc());
      connectQueue_.Schedule(items.back(), delay);
    }
    // When each is due, from the first placing.
    std::vector<int> due(delays.size(), -1);
    for (int now = 0; now <= 20000; now += 100) {
      int elapsed = now == 0 ? 0 : 100;
      connectQueue_.BeginPass();
      while (MP_SocketItem* head = connectQueue_.Head()) {
        if (connectQueue_.Charge(head, &elapsed) != MP_ConnectQueue::Charged::kDue) break;
        for (std::size_t i = 0; i < items.size(); ++i) {
          if (items[i] == head) due[i] = now;
        }
      }
    }
    for (MP_SocketItem* item : items) pool_->Free(item);
    return due;
  };
  EXPECT_EQ(order({0, 0, 0}), (std::vector<int>{0, 0, 0}));
  EXPECT_EQ(order({1000, 3000}), (std::vector<int>{1000, 3000}));
  EXPECT_EQ(order({3000, 1000}), (std::vector<int>{4000, 1000}));
  EXPECT_EQ(order({1000, 1000, 1500, 1200}), (std::vector<int>{1000, 1000, 1700, 1200}));
}

TEST_F(SocketPool, APassTakesNobodyTwice) {
  MP_SocketItem* const a = pool_->Alloc();
  MP_SocketItem* const b = pool_->Alloc();
  connectQueue_.Schedule(a, 0);
  connectQueue_.Schedule(b, 500);
  connectQueue_.Schedule(b, 0);  // which moves it
  int elapsed = 0;
  connectQueue_.BeginPass();
  for (MP_SocketItem* item : {a, b}) {
    ASSERT_EQ(connectQueue_.Head(), item);
    ASSERT_EQ(connectQueue_.Charge(item, &elapsed), MP_ConnectQueue::Charged::kDue);
    connectQueue_.Schedule(item, 0);
  }
  EXPECT_EQ(connectQueue_.Head(), nullptr);
  connectQueue_.BeginPass();
  EXPECT_EQ(connectQueue_.Head(), a);
  pool_->Free(a);
  EXPECT_EQ(connectQueue_.Charge(a, &elapsed), MP_ConnectQueue::Charged::kGone);
  EXPECT_EQ(connectQueue_.Head(), b);
}

}  // namespace
