#!/usr/bin/python3
"""Compares the segmenter's tokens with those of the installed jieba package, token for token.

usage: compare_with_jieba.py PRINT_TOKENS DICTIONARY_DIRECTORY

Texts: those written here, random strings with a fixed seed, and, where MORVA_CORPUS names a directory,
the texts under text/ and long/ in it. Full-width forms are read as ASCII by the segmenter, so jieba is
given the ASCII form; lines with letters other than Han and ASCII are left out. Exit status 77 means that
the package is not installed.
"""

import os
import random
import re
import shutil
import subprocess
import sys
import tempfile
import unicodedata

try:
    import jieba
except ImportError:
    print("python3-jieba is not installed")
    sys.exit(77)

SEPARATOR = "\x1f"
HAN = "[\u4e00-\u9fd5]"

WRITTEN = """\
他来到了网易杭研大厦
小明硕士毕业于中国科学院计算所,后在日本京都大学深造
结婚的和尚未结婚的都要登记
工信处女干事每月经过下属科室都要亲口交代24口交换机等技术性器件的安装工作
数据防泄漏系统在终端上识别敏感文档,并计算128位指纹。
研究生命的起源,研究生命科学的研究生说的确实在理
长春市长春节致辞,南京市长江大桥通车,武汉市长江二桥
乒乓球拍卖完了,乒乓球拍卖完了没有?
他说的确实在理这事的确定不下来,这样的人才能经受住考验
永和服装饰品有限公司的产品质量合格率为99.95%
中华人民共和国第九届全国人民代表大会常务委员会第二十三次会议
侵华日军南京大屠杀遇难同胞纪念馆位于江苏省南京市建邺区
李小福是创新办主任也是云计算方面的专家
韩玉赏鉴是一家台湾的韩国餐厅,台中正确应该不会被切开
版本v1.2.3-rc4发布于2023-06-14,比1.2.2快12.5%
请写信到zhang.san_99@example.com.cn或访问https://www.example.com/a/b?c=1&d=%E4%B8%AD#top
C++和C#都是编程语言,AT&T是一家公司,T恤和卡拉OK,A股B股
iPhone12的价格是¥6,299.00,约合$999.99,涨了3.14%.
电话:010-8888 6666转8001,传真+86-10-12345678
IPv4地址192.168.1.1/24,端口号8080,子网255.255.255.0
3.5英寸,1,000,000元,-40.5度,1e10,0x1F,100%%,50%的50%
a.b.c.d  e_f_g  --option=value  ..../../etc  #include <stdio.h>  &amp;
hello world, it's state-of-the-art; e.g. U.S.A. and 1st/2nd/3rd
（全角括号）《书名号》“引号”……省略号——破折号、顿号；分号：冒号！感叹？
犇骉麤毳淼焱垚鑫森晶品磊众,龘靐齉爩,囧烎兲氼
曱甴乪亍亐仺仼佡佢侴傮儫凓刋劦勜匤卪厴叏
一二三四五六七八九十百千万亿兆,二〇二三年,廿五
第１２３号,ＡＢＣ１２３,１２．５％,Ｃ＋＋
制表\t符  两个空格\u3000全角空格\xa0不断行空格
\u0085\u2028\u2029行的分隔\x0b\x0c\x1c\x1d\x1e尾
𠀀𠀁𪚥扩展区,〇〆々,豈更車,㐀㐁㐂䶵,鿖鿗鿘
©®™€£¥§¶°±×÷☺☻♥😀👍🏽🇨🇳
%%%%  ....  ----  ____  ++++  ####  &&&&
.5 5. .5. 5.5.5 5%5% 5.% a.5 a.5a a.5% %a -a- a- -a
东方红太阳升中国出了个毛泽东他为人民谋幸福呼儿嗨哟他是人民大救星
买水果然后来世博园最后去世博会
自然语言处理是人工智能领域中的一个重要方向
吉林省长春药店,北京大学生前来应聘,大学生活动中心
"""

RANDOM_ALPHABETS = [
    # (characters, weight): mixtures that reach every rule.
    "的一是在不了有和人这中大为上个国我以要他时来用们生到作地于出就分对成会可主发年动同工也能下过子说产种面而方后多定行学法所民得经",
    "abcXYZ0123456789.%-_+#&",
    "一二三四五六七八九十百千万亿0123456789.%年月日元",
    "中国人民共和银行大学生活动中心研究生命科学技术公司有限责任",
    "AT&TB股超C#c++γ射线T恤KTV卡拉OKSIM卡Q币".replace("γ", ""),
]


def fold(text):
    return "".join(chr(ord(c) - 0xFEE0) if "\uff01" <= c <= "\uff5e" else c for c in text)


def has_foreign_letter(text):
    return any(
        ord(c) > 127
        and not "\u4e00" <= c <= "\u9fd5"
        and (unicodedata.category(c)[0] in "LM" or unicodedata.category(c) == "Nd")
        and not unicodedata.name(c, "").startswith("CJK")
        for c in fold(text)
    )


def random_texts(count, seed):
    generator = random.Random(seed)
    words = sorted(w for w, f in jieba.dt.FREQ.items() if f and re.fullmatch(HAN + "+", w))
    every_han = [chr(c) for c in range(0x4E00, 0x9FD6)]
    for i in range(count):
        kind = i % 8
        if kind < 5:
            alphabet = RANDOM_ALPHABETS[kind]
            text = "".join(generator.choice(alphabet) for _ in range(generator.randint(1, 24)))
        elif kind == 5:
            text = "".join(generator.choice(every_han) for _ in range(generator.randint(1, 16)))
        elif kind == 6:
            # Words that overlap: where ties between ways to cut arise.
            pieces = [generator.choice(words) for _ in range(generator.randint(2, 6))]
            text = "".join(p[: generator.randint(1, len(p))] for p in pieces)
        else:
            alphabet = "".join(RANDOM_ALPHABETS) + " ,。\t、!"
            text = "".join(generator.choice(alphabet) for _ in range(generator.randint(1, 60)))
        yield text


def corpus_texts():
    corpus = os.environ.get("MORVA_CORPUS")
    for folder in ("text", "long") if corpus else ():
        for directory, _, names in sorted(os.walk(os.path.join(corpus, folder))):
            for name in sorted(names):
                with open(os.path.join(directory, name), "rb") as file:
                    content = file.read().decode("utf-8", "replace").replace("\0", " ")
                # Long pieces too: a whole file without foreign letters is one text.
                if has_foreign_letter(content):
                    yield from content.splitlines(True)
                else:
                    yield content


def tokens_of_segmenter(program, directory, texts):
    data = "".join(text + "\0" for text in texts).encode("utf-8", "replace")
    output = subprocess.run([program, directory], input=data, stdout=subprocess.PIPE, check=True).stdout
    return [part.split(SEPARATOR)[:-1] for part in output.decode("utf-8").split("\0")[:-1]]


def compare(name, program, directory, texts):
    texts = [t.replace(SEPARATOR, " ") for t in texts]
    texts = [t for t in texts if t and not has_foreign_letter(t)]
    results = tokens_of_segmenter(program, directory, texts)
    assert len(results) == len(texts), (len(results), len(texts))
    tokens = differing = shown = 0
    for text, ours in zip(texts, results):
        theirs = list(jieba.cut(fold(text)))
        tokens += len(theirs)
        if ours == theirs:
            continue
        same = sum(a == b for a, b in zip(ours, theirs))
        differing += max(len(theirs), len(ours)) - same
        if shown < 5:
            shown += 1
            first = next((i for i, (a, b) in enumerate(zip(ours, theirs)) if a != b), 0)
            print("  differs:", ours[first : first + 8], "instead of", theirs[first : first + 8])
    print(f"{name}: {len(texts)} texts, {tokens} tokens compared, {differing} differ")
    return differing


USER_WORDS = """\
\ufeff云计算 5
李小福 2 nr
创新办 3 i
easy_install 3 eng
好用 300
韩玉赏鉴 3 nz
八一双鹿 3 nz
台中
凱特琳 nz
Edu Trust认证 2000
数据防泄漏
泄漏系统
的确实
的 0
终端上 99999999999
研究生命 100000000
xyz123
中国 0 ns
  前后空格  7  n
三个 字段 8 n
一二三四五六七八九十一二三四五六七八九十
"""


def compare_user_words(program, directory):
    """The same with words of the user's own, loaded by both sides."""
    with tempfile.TemporaryDirectory() as folder:
        shutil.copy(os.path.join(directory, "morvajieba.dict"), folder)
        path = os.path.join(folder, "user.dict")
        with open(path, "w", encoding="utf-8") as file:
            file.write(USER_WORDS)
        jieba.load_userdict(path)
        words = [w for w in re.split(r"[ \n0-9]+", USER_WORDS) if w]
        generator = random.Random(11)
        mixed = ["".join(generator.choice(words + list("的中国人云计算数据一二三四五六七八九十"))
                         for _ in range(generator.randint(1, 12))).lstrip("\ufeff") for _ in range(4000)]
        texts = WRITTEN.splitlines() + list(random_texts(8000, 5)) + mixed
        return compare("user words", program, folder, texts)


def main():
    program, directory = sys.argv[1:3]
    jieba.setLogLevel(60)
    with tempfile.TemporaryDirectory() as folder:
        # Without a cache that another user or version may have left.
        jieba.dt.tmp_dir = folder
        jieba.initialize()
    differing = compare("written", program, directory, [WRITTEN] + WRITTEN.splitlines())
    joined = "".join(WRITTEN.split())
    differing += compare("one long run", program, directory, [re.sub("[^\u4e00-\u9fd5a-z0-9]", "", joined) * 50])
    differing += compare("random", program, directory, random_texts(60000, 7))
    differing += compare("corpus", program, directory, corpus_texts())
    differing += compare_user_words(program, directory)
    return 1 if differing else 0


if __name__ == "__main__":
    sys.exit(main())
