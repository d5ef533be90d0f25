// Results that may be longer than memory: their items are printed as they come.
//
// A Listing prints what stands in front of the items when it is made. Without finish() JSON stays open: what
// broke off does not look whole. One thread.
#pragma once
#include <cstdio>
#include <string>

namespace mkvx {

template <typename Item>
class Listing {
  public:
    explicit Listing(std::FILE* out) : mOut(out) {}
    virtual ~Listing() = default;
    Listing(const Listing&) = delete;
    Listing& operator=(const Listing&) = delete;

    virtual void write(const Item& item) = 0;
    // Behind the last item.
    virtual void finish() {}

  protected:
    std::FILE* const mOut;
};

// One object a line.
template <typename Item>
class JsonLines : public Listing<Item> {
  public:
    using Listing<Item>::Listing;

    void write(const Item& item) override {
        printJson(item, this->mOut);
        std::fputc('\n', this->mOut);
    }
};

// One object in all, with the items in a list. `opening` is what openResult() of Json.h makes.
template <typename Item>
class JsonList : public Listing<Item> {
  public:
    JsonList(const std::string& opening, std::FILE* out) : Listing<Item>(out) {
        std::fputs(opening.c_str(), out);
    }

    void write(const Item& item) override {
        std::fputs(mIsFirst ? "\n" : ",\n", this->mOut);
        printJson(item, this->mOut);
        mIsFirst = false;
    }
    void finish() override { std::fputs("\n]}\n", this->mOut); }

  private:
    bool mIsFirst = true;
};

}  // namespace mkvx
