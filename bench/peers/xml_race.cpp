// XML load, delete and print beside the peers.
#include "documents.h"
#include "race.h"
#include "xml_peer.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <morvane/platform/debug_channel.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

XmlPeer const * const peers[]{&morvanePeer, &pugixmlPeer, &rapidxmlPeer, &tinyxml2Peer,
                              &libxml2Peer, &xercesPeer,  &qtPeer,       &pocoPeer};

char const * outputPath = "/dev/null";

std::vector<void *> loadAll(XmlPeer const & peer, Document const & document, int times = 1) {
    std::vector<void *> trees;
    trees.reserve(static_cast<std::size_t>(times));
    for (int time = 0; time < times; ++time) {
        void * tree = peer.load(document.text.data(), document.text.size());
        if (tree == nullptr) {
            std::fprintf(stderr, "%s refuses %s\n", peer.name, document.name.c_str());
            std::exit(1);
        }
        trees.push_back(tree);
    }
    return trees;
}

void destroyAll(XmlPeer const & peer, std::vector<void *> const & trees) {
    for (void * tree : trees) {
        peer.destroy(tree);
    }
}

/// All contestants must have made the same tree before anything is timed.
void compareCounts(Document const & document) {
    std::size_t expected = 0;
    for (XmlPeer const * peer : peers) {
        void * tree = peer->load(document.text.data(), document.text.size());
        std::size_t const count = tree != nullptr ? peer->count(tree) : 0;
        if (tree != nullptr) {
            peer->destroy(tree);
        }
        if (peer == peers[0]) {
            expected = count;
        }
        if (count != expected || count == 0) {
            std::fprintf(stderr, "%s: %s finds %zu nodes, %s %zu\n", document.name.c_str(), peer->name, count,
                         peers[0]->name, expected);
            std::exit(1);
        }
    }
}

/// Times of one contestant at one document, a value a round.
struct Splits {
    std::vector<double> load, loadDelete, print, save;
};

/// Trees of a small document that are alive at once: a program that reads many of them is done with one before it comes
/// to the next.
constexpr int treesAtOnce = 10;

/// Calls `work` with each of the trees, and so on, `times` times in all.
template <typename Work>
void eachInTurn(std::vector<void *> const & trees, int times, Work work) {
    for (int time = 0; time < times; ++time) {
        work(trees[static_cast<std::size_t>(time) % trees.size()]);
    }
}

/// One turn of one contestant: the document is loaded and deleted as often as it says; the trees of the last loading
/// are printed and saved as often before they go.
void takeTurn(XmlPeer const & peer, Document const & document, Splits & splits) {
    double load = 0, print = 0, save = 0, destroy = 0;
    for (int left = document.times; left > 0; left -= treesAtOnce) {
        double const start = race::now();
        std::vector<void *> const trees = loadAll(peer, document, std::min(left, treesAtOnce));
        load += race::now() - start;
        if (left <= treesAtOnce) {
            double const loaded = race::now();
            eachInTurn(trees, document.times, [&](void * tree) { race::keep(peer.print(tree)); });
            double const printed = race::now();
            eachInTurn(trees, document.times, [&](void * tree) {
                if (!peer.save(tree, outputPath)) {
                    std::fprintf(stderr, "%s can't write %s\n", peer.name, outputPath);
                    std::exit(1);
                }
            });
            print = printed - loaded;
            save = race::now() - printed;
        }
        double const last = race::now();
        destroyAll(peer, trees);
        destroy += race::now() - last;
    }
    splits.load.push_back(load);
    splits.loadDelete.push_back(load + destroy);
    splits.print.push_back(print);
    splits.save.push_back(save);
}

void raceDocument(race::Race & contest, Document const & document) {
    compareCounts(document);
    double const work = static_cast<double>(document.text.size()) * document.times;
    std::size_t const count = std::size(peers);
    std::vector<Splits> splits(count);
    for (int round = -1; round < contest.rounds(); ++round) {
        for (std::size_t turn = 0; turn < count; ++turn) {
            std::size_t const index = (turn + static_cast<std::size_t>(round + 1)) % count;
            Splits warmUp;
            takeTurn(*peers[index], document, round >= 0 ? splits[index] : warmUp);
        }
    }
    for (std::size_t index = 0; index < count; ++index) {
        contest.record("XML load", document.name, work, peers[index]->name, splits[index].load);
        contest.record("XML load and delete", document.name, work, peers[index]->name, splits[index].loadDelete);
        contest.record("XML print to memory", document.name, work, peers[index]->name, splits[index].print);
        contest.record("XML print to a file", document.name, work, peers[index]->name, splits[index].save);
    }
}

void describe(race::Race & contest, Document const & document) {
    XmlShape const shape = shapeOf(document.text);
    auto const tell = [&](char const * what, std::size_t value) {
        contest.figure("XML document", document.name, what, static_cast<double>(value));
    };
    tell("bytes", document.text.size());
    tell("elements", shape.elements);
    tell("attributes", shape.attributes);
    tell("texts", shape.texts);
    tell("text units", shape.textUnits);
}

/// Load and print over fourfold sizes: time a byte should stay. The sizes take turns too.
void raceGrowth(race::Race & contest) {
    std::vector<Document> documents;
    for (std::size_t const size : {1, 4, 16, 64}) {
        if (size <= (contest.quick() ? 4U : 64U)) {
            documents.push_back({std::to_string(size) + " MB", recordsOf(size * 1'000'000), 1});
        }
    }
    XmlPeer const * const contestants[]{&morvanePeer, &pugixmlPeer};
    std::vector<Splits> splits(documents.size() * std::size(contestants));
    for (int round = -1; round < contest.rounds(); ++round) {
        auto place = splits.begin();
        for (Document const & document : documents) {
            for (XmlPeer const * peer : contestants) {
                double const start = race::now();
                std::vector<void *> const trees = loadAll(*peer, document);
                double const loaded = race::now();
                race::keep(peer->print(trees[0]));
                double const printed = race::now();
                destroyAll(*peer, trees);
                if (round >= 0) {
                    place->load.push_back(loaded - start);
                    place->print.push_back(printed - loaded);
                }
                ++place;
            }
        }
    }
    auto place = splits.begin();
    for (Document const & document : documents) {
        for (XmlPeer const * peer : contestants) {
            double const work = static_cast<double>(document.text.size());
            contest.record("XML growth, load", document.name, work, peer->name, place->load);
            contest.record("XML growth, print", document.name, work, peer->name, place->print);
            ++place;
        }
    }
}

/// Peak memory of one load in a process of its own, less what the process held before it, the document's bytes
/// included.
void raceMemory(race::Race & contest) {
    std::size_t const bytes = contest.quick() ? 1'000'000 : 10'000'000;
    for (XmlPeer const * peer : peers) {
        int channel[2];
        if (pipe(channel) != 0) {
            std::exit(1);
        }
        std::fflush(nullptr);
        pid_t const child = fork();
        if (child == 0) {
            rusage usage{};
            Document const document{"records", recordsOf(bytes), 1};
            getrusage(RUSAGE_SELF, &usage);
            long const before = usage.ru_maxrss;
            loadAll(*peer, document);
            getrusage(RUSAGE_SELF, &usage);
            double const value =
                static_cast<double>(usage.ru_maxrss - before) * 1024 / static_cast<double>(document.text.size());
            _exit(write(channel[1], &value, sizeof value) == sizeof value ? 0 : 1);
        }
        double value = 0;
        close(channel[1]);
        if (read(channel[0], &value, sizeof value) == sizeof value) {
            contest.figure("XML peak memory of a load", "records, times the file's bytes", peer->name, value);
        }
        close(channel[0]);
        waitpid(child, nullptr, 0);
    }
}

} // namespace

int main(int count, char ** arguments) {
    morvane::platform::setDebugListener(nullptr);
    race::Race contest(count, arguments);
    if (char const * path = std::getenv("MORVANE_RACE_FILE")) {
        outputPath = path;
    }
    if (contest.wants("XML memory", "")) {
        raceMemory(contest);
    }
    for (Document const & document : raceDocuments(contest.quick())) {
        if (contest.wants("XML", document.name)) {
            describe(contest, document);
            raceDocument(contest, document);
        }
    }
    if (contest.wants("XML growth", "")) {
        raceGrowth(contest);
    }
    return 0;
}
