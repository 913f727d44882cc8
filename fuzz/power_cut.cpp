#include "fuzz/power_cut.h"

#include <algorithm>

namespace vantrel::fuzz {

namespace {

constexpr std::size_t kSector = 512;
/// Up to so many operations, all combinations of their fates are visited.
constexpr std::size_t kFewWrites = 2;
constexpr std::size_t kFewNames = 5;
/// Up to so many, all combinations of contents and names are visited.
constexpr std::size_t kFewStates = 160;

/// A range of bytes.
struct SRange {
    std::size_t begin;
    std::size_t end;
};

/// What an operation touches of a file that has at most `longest` bytes: if it changes the length, all bytes behind it.
SRange RangeOf(const SDiskOperation& operation, std::size_t longest) {
    const auto begin = static_cast<std::size_t>(operation.position);
    return {begin, operation.kind == EDiskOperation::Write ? begin + operation.bytes.size() : longest};
}

std::size_t LengthAfter(const SDiskOperation& operation, std::size_t length) {
    const auto position = static_cast<std::size_t>(operation.position);
    return operation.kind == EDiskOperation::Resize ? position : std::max(length, position + operation.bytes.size());
}

/// Applies an operation to a part of a content.
void Apply(const SDiskOperation& operation, Bytes& content, SRange part) {
    const SRange range = RangeOf(operation, content.size());
    const std::size_t end = std::min(part.end, range.end);
    for (std::size_t i = std::max(part.begin, range.begin); i < end; ++i) {
        content[i] = operation.kind == EDiskOperation::Write ? operation.bytes[i - range.begin] : std::uint8_t{0};
    }
}

/// Whether a torn write loses a sector.
bool IsTornAway(std::uint32_t tear, std::size_t write, std::size_t sector) {
    std::minstd_rand random(static_cast<std::uint32_t>(tear + write * 7919 + sector * 104'729));
    random.discard(2);
    return random() % 2 == 0;
}

/// Copies the folders and the numbers of the files that have a path.
void CopyReachable(const SDiskTree& all, Node folder, SDiskTree& reachable) {
    reachable.folders[folder] = all.folders.at(folder);
    for (const auto& [name, node] : all.folders.at(folder)) {
        if (all.folders.contains(node)) {
            CopyReachable(all, node, reachable);
        } else {
            reachable.files[node];
        }
    }
}

}  // namespace

CPowerCut::CPowerCut(const SDiskTree& before, std::span<const SDiskOperation> done)
    : m_before(before), m_done(done), m_flushed(before.files) {
    for (std::size_t i = 0; i < done.size(); ++i) {
        switch (done[i].kind) {
            case EDiskOperation::ChangeNames:
                AddNames(i);
                break;
            case EDiskOperation::FlushFolder:
                Keep(m_changesIn[done[i].node], m_flushedNames);
                break;
            case EDiskOperation::FlushFile:
                FlushFile(i);
                break;
            case EDiskOperation::Write:
            case EDiskOperation::Resize:
                m_writes.push_back(i);
        }
    }
    for (const auto& [number, needed] : m_needed) {
        if (!m_flushedNames.contains(number)) {
            m_names.push_back(number);
        }
    }
}

void CPowerCut::AddNames(std::size_t number) {
    const SDiskOperation& operation = m_done[number];
    Numbers& needed = m_needed[number];
    for (const SNameChange& change : operation.names) {
        const auto [last, isFirst] = m_lastChange.try_emplace({change.folder, change.name}, number);
        if (!isFirst) {
            needed.insert(std::exchange(last->second, number));
        }
        m_changesIn[change.folder].insert(number);
    }
    if (operation.node != kNothing && operation.names.front().node == kNothing) {  // the folder is removed
        const Numbers& emptied = m_changesIn[operation.node];
        needed.insert(emptied.begin(), emptied.end());
    }
}

void CPowerCut::FlushFile(std::size_t number) {
    const Node file = m_done[number].node;
    const auto content = std::make_shared<Bytes>(m_flushed.contains(file) ? *m_flushed[file] : Bytes());
    std::erase_if(m_writes, [&](std::size_t write) {
        if (m_done[write].node != file) {
            return false;
        }
        content->resize(LengthAfter(m_done[write], content->size()));
        Apply(m_done[write], *content, {0, content->size()});
        return true;
    });
    m_flushed[file] = content;
}

/// Adds changes of names, and those that precede them on the disk.
void CPowerCut::Keep(Numbers changes, Numbers& kept) const {
    while (!changes.empty()) {
        const std::size_t number = *changes.begin();
        changes.erase(changes.begin());
        if (kept.insert(number).second) {
            const Numbers& needed = m_needed.at(number);
            changes.insert(needed.begin(), needed.end());
        }
    }
}

Bytes CPowerCut::ContentWith(Node file, const WriteFates& fates, std::uint32_t tear) const {
    Bytes content = m_flushed.contains(file) ? *m_flushed.at(file) : Bytes();
    std::vector<std::size_t> writes;  // by number of m_writes
    std::size_t present = content.size();
    std::size_t shown = content.size();
    std::size_t longest = content.size();
    for (std::size_t i = 0; i < m_writes.size(); ++i) {
        const SDiskOperation& operation = m_done[m_writes[i]];
        if (operation.node == file) {
            writes.push_back(i);
            const std::size_t length = LengthAfter(operation, present);
            const bool isKept = fates[i] != EFate::Lost && fates[i] != EFate::DataKept;
            shown = length != present && isKept ? length : shown;
            present = length;
            longest = std::max(longest, length);
        }
    }
    content.resize(longest);
    for (std::size_t start = 0; start < longest; start += kSector) {
        const SRange sector = {start, std::min(start + kSector, longest)};
        const auto isLast = [&](std::size_t i) {
            const SRange range = RangeOf(m_done[m_writes[i]], longest);
            const bool isKept = fates[i] == EFate::Kept || fates[i] == EFate::DataKept ||
                                (fates[i] == EFate::Torn && !IsTornAway(tear, i, start / kSector));
            return isKept && range.begin < sector.end && sector.begin < range.end;
        };
        const auto end = std::find_if(writes.rbegin(), writes.rend(), isLast).base();
        std::for_each(writes.begin(), end, [&](std::size_t i) { Apply(m_done[m_writes[i]], content, sector); });
    }
    content.resize(shown);
    return content;
}

SDiskTree CPowerCut::StateWith(const Numbers& names, const WriteFates& writes, std::uint32_t tear) const {
    Numbers kept = m_flushedNames;
    Keep(names, kept);
    SDiskTree all = {{}, m_before.folders};
    for (const std::size_t number : kept) {
        if (m_done[number].node != kNothing) {
            all.folders[m_done[number].node];
        }
        for (const SNameChange& change : m_done[number].names) {
            auto& folder = all.folders[change.folder];
            folder[change.name] = change.node;
            if (change.node == kNothing) {
                folder.erase(change.name);
            }
        }
    }
    SDiskTree state;
    CopyReachable(all, kRoot, state);
    for (auto& [file, content] : state.files) {
        const bool isWritten = std::any_of(m_writes.begin(), m_writes.end(),
                                           [&, node = file](std::size_t write) { return m_done[write].node == node; });
        content = !isWritten && m_flushed.contains(file) ? m_flushed.at(file)
                                                         : std::make_shared<Bytes>(ContentWith(file, writes, tear));
    }
    return state;
}

CPowerCut::Numbers CPowerCut::NamesWithout(std::size_t number) const {
    Numbers names;
    for (const std::size_t candidate : m_names) {
        Numbers kept;
        Keep({candidate}, kept);
        if (!kept.contains(number)) {
            names.insert(candidate);
        }
    }
    return names;
}

/// All changes come first.
std::vector<CPowerCut::Numbers> CPowerCut::ChoicesOfNames() const {
    std::set<Numbers> choices = {{}};
    if (m_names.size() <= kFewNames) {
        for (const std::size_t number : m_names) {
            for (Numbers choice : std::set<Numbers>(choices)) {
                Keep({number}, choice);
                choices.insert(choice);
            }
        }
    } else {
        for (const std::size_t number : m_names) {
            choices.insert({number});
            choices.insert(NamesWithout(number));
        }
    }
    std::vector<Numbers> ordered = {Numbers(m_names.begin(), m_names.end())};
    ordered.insert(ordered.end(), choices.begin(), choices.end());
    return ordered;
}

/// Those that are the same for all writes come first.
std::vector<CPowerCut::WriteFates> CPowerCut::ChoicesOfWrites() const {
    static constexpr EFate kFates[] = {EFate::Lost, EFate::LengthKept, EFate::DataKept, EFate::Kept, EFate::Torn};
    std::vector<WriteFates> choices;
    for (const EFate fate : kFates) {
        choices.emplace_back(m_writes.size(), fate);
    }
    if (m_writes.size() <= kFewWrites) {
        std::vector<WriteFates> all = {WriteFates()};
        for (std::size_t i = 0; i < m_writes.size(); ++i) {
            std::vector<WriteFates> longer;
            for (WriteFates fates : all) {
                fates.push_back(EFate::Lost);
                for (const EFate fate : kFates) {
                    fates.back() = fate;
                    longer.push_back(fates);
                }
            }
            all = longer;
        }
        choices.insert(choices.end(), all.begin(), all.end());
        return choices;
    }
    for (std::size_t i = 0; i < m_writes.size(); ++i) {
        for (const EFate fate : kFates) {
            choices.emplace_back(m_writes.size(), fate == EFate::Kept ? EFate::Lost : EFate::Kept);
            choices.back()[i] = fate;
        }
    }
    return choices;
}

void CPowerCut::ForEachState(std::mt19937& random, int randomStates,
                             const std::function<void(SDiskTree)>& visit) const {
    constexpr std::size_t kUniformFates = 5;
    const std::vector<Numbers> names = ChoicesOfNames();
    const std::vector<WriteFates> writes = ChoicesOfWrites();
    const bool areFew = names.size() * writes.size() <= kFewStates;
    for (std::size_t i = 0; i < names.size(); ++i) {
        for (std::size_t j = 0; j < writes.size(); ++j) {
            if (areFew || i == 0 || j < kUniformFates) {
                visit(StateWith(names[i], writes[j], static_cast<std::uint32_t>(random())));
            }
        }
    }
    for (int i = 0; i < randomStates && !areFew; ++i) {
        visit(RandomState(random));
    }
}

SDiskTree CPowerCut::RandomState(std::mt19937& random) const {
    Numbers names;
    WriteFates writes;
    for (const std::size_t number : m_names) {
        if (random() % 2 == 0) {
            names.insert(number);
        }
    }
    for (std::size_t i = 0; i < m_writes.size(); ++i) {
        writes.push_back(static_cast<EFate>(random() % 5));
    }
    return StateWith(names, writes, static_cast<std::uint32_t>(random()));
}

}  // namespace vantrel::fuzz
