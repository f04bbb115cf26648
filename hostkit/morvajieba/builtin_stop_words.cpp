#include "morvajieba/stop_words.h"

namespace morvajieba {

// Function words, pronouns, auxiliaries, numerals of counting and phrases of pure structure. Words
// that can be a subject ("system", "能力") stay out. A word of a single character needs no entry:
// it is no candidate for a keyword.
std::wstring_view const builtin_stop_words =
    // English: articles, pronouns, determiners
    L"a an the i me my mine myself we us our ours ourselves you your yours yourself yourselves he "
    L"him "
    L"his himself she her hers herself it its itself they them their theirs themselves this that "
    L"these "
    L"those who whom whose which what whatever whichever whoever one ones some any each every "
    L"either "
    L"neither both all none such same other others another many much more most few fewer less "
    L"least "
    L"several enough own something anything nothing everything someone anyone everyone nobody "
    L"somebody "
    L"anybody everybody no not nor "
    // English: auxiliaries
    L"am is are was were be been being do does did doing done have has had having will would shall "
    L"should can could may might must ought cannot let lets don doesn didn isn aren wasn weren "
    L"hasn "
    L"haven hadn won wouldn shouldn couldn mustn ain ll ve re "
    // English: prepositions, conjunctions, adverbs of structure
    L"of to in on at by for from with without within about above across after against along among "
    L"around as because before behind below beneath beside besides between beyond but despite down "
    L"during except if inside into like near off onto or out outside over past per since than "
    L"though "
    L"through throughout till toward towards under unless until up upon versus via when whenever "
    L"where "
    L"wherever whereas whether while and also although again already almost always anyway away "
    L"back "
    L"else even ever far further hence here how however indeed instead just later maybe meanwhile "
    L"moreover namely never nevertheless now often once only otherwise perhaps quite rather really "
    L"seem seems seemed so sometimes somewhat soon still then thence there thereby therefore thus "
    L"together too usually very well why yet etc eg ie vs "
    L"say says said get gets got go goes went come comes came make makes made take takes took put "
    // Chinese: pronouns and demonstratives
    L"我们 你们 您们 他们 她们 它们 咱们 人家 自己 自身 本人 本身 别人 他人 大家 彼此 各自 各位 "
    L"某个 某些 某种 "
    L"这个 那个 这些 那些 这种 那种 这样 那样 这么 那么 这里 那里 这儿 那儿 这边 那边 这时 那时 "
    L"此时 此处 此次 "
    L"此外 如此 其他 其它 其余 其中 其实 其次 其一 其二 什么 怎么 怎样 怎么样 如何 为何 为什么 "
    L"哪个 哪些 哪里 "
    L"哪儿 哪怕 谁知 多少 几个 若干 任何 所有 一切 一些 一个 一种 一样 一般 一直 一定 一下 一点 "
    L"一旦 一方面 "
    L"另一方面 另外 每个 每次 各个 各种 各类 各项 许多 很多 不少 大量 全部 整个 有些 有的 有关 "
    // Chinese: conjunctions and prepositions
    L"以及 以至 以致 以便 以免 以来 以后 以前 以上 以下 以外 以内 并且 并非 并不 而且 而是 而已 "
    L"而言 然而 然后 "
    L"但是 但却 不过 不仅 不但 不只 不论 不管 不然 不如 只是 只有 只要 只能 只好 因为 因此 因而 "
    L"由于 由此 所以 "
    L"于是 从而 从此 如果 假如 假使 倘若 要是 若是 即使 即便 即将 尽管 虽然 虽说 虽则 固然 既然 "
    L"既是 无论 除了 "
    L"除非 除此之外 否则 或者 或是 或许 还是 还有 还要 甚至 甚而 乃至 以为 至于 关于 对于 基于 "
    L"鉴于 根据 按照 "
    L"依照 依据 通过 经过 随着 为了 为着 作为 当中 之间 之前 之后 之中 之一 之内 之外 之类 之所以 "
    L"与其 与此同时 "
    L"同时 同样 例如 比如 譬如 诸如 比方 换言之 换句话说 总之 总的来说 总而言之 综上所述 也就是说 "
    L"就是说 就是 "
    L"就要 便是 正是 正如 正在 可是 可见 可以 可能 能够 能否 应该 应当 必须 必要 需要 不能 不会 "
    L"不是 不可 不要 "
    L"不得 不同 没有 并没有 是否 是不是 有没有 "
    // Chinese: adverbs and particles of structure
    L"非常 十分 特别 尤其 相当 比较 更加 越来越 最为 极其 极为 几乎 大约 大概 左右 似乎 好像 仿佛 "
    L"也许 究竟 到底 "
    L"毕竟 终于 最后 最终 首先 再次 再者 接着 随后 随即 立即 立刻 马上 刚刚 刚才 已经 曾经 将要 "
    L"将会 仍然 仍旧 "
    L"依然 还会 始终 总是 往往 常常 经常 有时 有时候 偶尔 不断 不再 再也 反而 反之 反正 恰恰 恰好 "
    L"居然 竟然 果然 "
    L"当然 自然而然 显然 的确 确实 实际上 事实上 基本上 一般来说 起来 出来 上来 下来 过来 出去 "
    L"上去 下去 过去了 "
    L"进行 加以 给予 予以 得到 使得 来说 来讲 来看 看来 看到 说来 说道 所谓 所在 有所 无所 的话 "
    L"罢了 似的 等等 "
    L"时候 那时候 这时候 目前 现在 今后 当时 当前 一会儿 一起 一同 共同 分别 各自 并列 成为 变成 "
    L"属于 "
    L"今天 昨天 明天 方面 之下 之上 之时 不已 不止 不足 何况 况且 何处 何时 ";

}  // namespace morvajieba
