"""Texts that are the same in every run: Chinese with the frequencies of jieba's dictionary, and English."""

import functools
import itertools
import pathlib
import random

DICTIONARY = pathlib.Path("/usr/lib/python3/dist-packages/jieba/dict.txt")
ENGLISH = """the of and to in a is that for it as was with be by on not he his but at are this have from or had
an they which one you were all her she there would their we him been has when who will no more if out so up said
what its about than into them can only other time new some could these two may first then do any like my now over
such our man me even most made after also did many off before must well back through years much where your way
report budget system network document policy server market company government research history science project
contract delivery harbour engine memory processor language service customer quality analysis security record
office station climate energy medicine patient theory measure device software""".split()
TOPICS = 20
WORDS_OF_TOPIC = 400


@functools.cache
def vocabulary():
    """Words, and their summed frequencies."""
    words, frequencies = [], []
    with DICTIONARY.open(encoding="utf-8") as lines:
        for line in lines:
            word, frequency, _ = line.split(" ", 2)
            if int(frequency) >= 3:
                words.append(word)
                frequencies.append(int(frequency))
    return words, list(itertools.accumulate(frequencies))


@functools.cache
def topic_words(topic):
    words = [word for word in vocabulary()[0] if len(word) > 1]
    return random.Random(f"topic {topic}").sample(words, WORDS_OF_TOPIC)


class Writer:
    """Sentences about one of the topics."""

    def __init__(self, seed):
        self.random = random.Random(seed)
        self.topic = topic_words(self.random.randrange(TOPICS))

    def sentence(self):
        length = self.random.randint(6, 24)
        if self.random.random() < 0.15:
            return " ".join(self.random.choices(ENGLISH, k=length)).capitalize() + ". "
        words, frequencies = vocabulary()
        chosen = self.random.choices(words, cum_weights=frequencies, k=length)
        for place in range(0, length, 3):
            # The low words of a topic are the frequent ones.
            chosen[place] = self.topic[int(WORDS_OF_TOPIC * self.random.random() ** 3)]
        chosen.insert(length // 2, "，")
        return "".join(chosen) + "。"

    def paragraph(self):
        return [self.sentence() for _ in range(self.random.randint(3, 8))]

    def paragraphs(self, size):
        """Lists of sentences, of some `size` bytes as UTF-8."""
        written = []
        while size > 0:
            written.append(self.paragraph())
            size -= sum(len(sentence.encode()) for sentence in written[-1])
        return written
