#include "bench/corpus/vocabulary.h"

#include <QStringList>

using namespace Qt::Literals::StringLiterals;

namespace quillon::corpus
{

namespace
{

std::vector<QString> words(const QString& list)
{
    const QStringList parts = list.split(u' ', Qt::SkipEmptyParts);
    return {parts.begin(), parts.end()};
}

std::vector<QString> lines(const QString& list)
{
    const QStringList parts = list.split(u'\n', Qt::SkipEmptyParts);
    return {parts.begin(), parts.end()};
}

const QString Kanji =
    u"水 火 土 金属 木材 空気 温度 圧力 速度 加速度 質量 重力 電流 電圧 抵抗 磁場 光 音 波 熱 力学 運動 反応 酸化 還元 "
    u"元素 原子 分子 結晶 溶液 触媒 化合物 混合物 蒸留水 硫酸 塩酸 炭素 酸素 窒素 水素 鉄鋼 銅 銀 白金 鉱物 岩石 火山 "
    u"地震 津波 台風 気象 降水量 湿度 季節 潮汐 海流 河川 湖沼 森林 草原 砂漠 氷河 平野 盆地 半島 海峡 大陸 列島 植物 "
    u"動物 昆虫 魚類 鳥類 哺乳類 爬虫類 細菌 細胞 遺伝子 染色体 蛋白質 酵素 免疫 抗体 血液 血圧 心臓 肝臓 腎臓 神経 "
    u"脳 筋肉 骨格 皮膚 視覚 聴覚 栄養 消化 呼吸 睡眠 病気 感染症 診断 治療 手術 薬剤 予防 衛生 看護 介護 医療 保険 "
    u"法律 憲法 民法 刑法 契約 権利 義務 裁判 判決 条約 外交 政府 議会 選挙 行政 自治体 税金 予算 財政 金融 銀行 通貨 "
    u"株式 債券 利子 市場 需要 供給 価格 物価 貿易 輸出 輸入 産業 工業 農業 漁業 林業 商業 企業 経営 会計 簿記 在庫 "
    u"品質 生産 製造 工場 機械 装置 部品 設計 図面 試験 検査 計測 誤差 統計 確率 関数 方程式 行列 集合 論理 証明 定理 "
    u"幾何 代数 微分 積分 数列 対数 三角形 円周率 情報 通信 回線 電話 暗号 符号 言語 文法 単語 文章 辞書 翻訳 文学 小説 "
    u"詩 俳句 短歌 随筆 神話 伝説 歴史 古代 中世 近代 現代 戦争 革命 王朝 幕府 将軍 武士 貴族 農民 城 寺院 神社 仏教 "
    u"儒教 哲学 倫理 心理 教育 学校 大学 試験問題 教科書 研究 実験 観察 仮説 理論 概念 定義 分類 資料 文献 記録 目録 "
    u"索引 図書館 博物館 美術 絵画 彫刻 建築 音楽 楽器 和声 演劇 映画 写真 放送 新聞 雑誌 出版 印刷 料理 米 小麦 大豆 "
    u"野菜 果物 牛乳 砂糖 塩 醤油 味噌 茶 酒 衣服 住居 家具 家族 結婚 葬儀 年中行事 交通 道路 鉄道 航空 船舶 港湾 橋梁 "
    u"自動車 自転車 燃料 石油 石炭 天然瓦斯 原子力 発電 送電 環境 公害 廃棄物 再利用 生態系 人口 都市 農村 社会 文化 "
    u"宗教 風習 国家 民族 国際 平和 安全 災害 消防 警察 防衛 宇宙 太陽 月 惑星 恒星 銀河 彗星 望遠鏡 人工衛星 時間 空間 "
    u"資格 講座 課題 手順 規則 基準 仕様 様式 申請 許可 登録 管理 計画 会議 議事録 報告 連絡 相談 評価 改善"_s;

const QString Katakana =
    u"データ データベース コンピュータ ネットワーク プログラム ソフトウェア ハードウェア メモリ ファイル フォルダ "
    u"サーバ クライアント インターネット メール ブラウザ キーボード マウス ディスプレイ プリンタ スキャナ アルゴリズム "
    u"コンパイラ インタプリタ オブジェクト クラス ポインタ スタック キュー リスト ツリー グラフ ハッシュ インデックス "
    u"トランザクション バックアップ セキュリティ パスワード ウイルス エネルギー エントロピー エンジン モータ ポンプ "
    u"バルブ センサ トランジスタ ダイオード コンデンサ コイル レーザ レンズ プリズム スペクトル アルカリ アルコール "
    u"アンモニア エチレン カルシウム ナトリウム マグネシウム アルミニウム チタン ニッケル ウラン プラスチック ゴム ガラス "
    u"セラミック セメント ビタミン ホルモン インスリン アミノ酸 タンパク アレルギー ワクチン ウィルス リハビリ カルテ "
    u"ストレス マーケティング コスト サービス マネジメント リスク プロジェクト スケジュール マニュアル レポート カタログ "
    u"ヨーロッパ アジア アフリカ アメリカ フランス ドイツ イギリス イタリア スペイン ギリシャ ローマ ロシア インド "
    u"オーケストラ ピアノ バイオリン リズム メロディ デザイン スケッチ カメラ フィルム テレビ ラジオ ニュース スポーツ "
    u"サッカー テニス スキー パン チーズ バター コーヒー ワイン スープ ソース サラダ ページ テーブル フィールド レコード"_s;

const QString Hiragana =
    u"しくみ はたらき きまり ことば かたち ちから ひかり うごき まとめ しらべもの おぼえがき たとえ つながり ちがい "
    u"はかり ものさし こよみ まつり くらし すまい きもの たべもの のりもの どうぶつ さかな きのこ くすり けが しごと あそび "
    u"むかし話 ことわざ 手がかり 使い方 作り方 見方 考え方 言いかえ 書き方 読み方"_s;

const QString Latin =
    u"DNA RNA pH CPU LAN WAN OS API SQL HTML XML HTTP FTP TCP IP USB SCSI CD-ROM DVD ISO JIS ANSI IEEE GNP GDP WTO OECD "
    u"UNESCO WHO NASA GPS CAD CAM QC PDCA Q&A FAQ ROM RAM BIOS ASCII Unicode Basic Pascal Fortran Java Lisp Newton Darwin "
    u"Einstein Kepler Shakespeare Mozart Bach"_s;

const QString Suffixes =
    u"論 学 法 率 量 性 化 式 型 器 機 表 図 史 説 系 層 体 値 点 線 面 帯 圏 権 費 業 者 会 案 集 書 "
    u"入門 概論 総覧 一覧 の基礎 の応用 の歴史 の種類 の構造 の測定 の管理"_s;

const QString Prefixes = u"新 旧 再 非 未 無 超 準 副 全 各 総 高 低 多 単 複 主 前 後"_s;

const QString Adjectives =
    u"重要な 基本的な 複雑な 簡単な 新しい 古い 大きな 小さな 高い 低い 特殊な 一般的な 代表的な 具体的な 抽象的な 伝統的な "
    u"近代的な 電子的な 物理的な 化学的な 社会的な 経済的な 自然の 人工の 国内の 海外の 各地の 最初の 主な いくつかの 多くの "
    u"同じ 異なる 必要な 十分な 安全な 正確な おおまかな"_s;

const QString Verbs =
    u"説明 利用 研究 分析 観察 測定 比較 検討 整理 分類 記録 保存 変換 計算 証明 発見 発明 発展 変化 増加 減少 移動 反応 "
    u"分解 合成 製造 加工 輸送 販売 購入 契約 管理 運営 改善 修正 確認 登録 検索 翻訳 出版 公開 導入 廃止 実施 評価 予測 "
    u"制御 調整 設計 開発 実験 教育 学習 練習 記憶 応用"_s;

const QString Connectors =
    u"また、 しかし、 さらに、 そのため、 たとえば、 一方、 ただし、 なお、 すなわち、 したがって、 特に、 近年、 従来、 "
    u"その結果、 このように、 これに対して、 まず、 次に、 最後に、 つまり、"_s;

const QString Places =
    u"東京 大阪 京都 奈良 名古屋 横浜 神戸 札幌 仙台 広島 福岡 長崎 鹿児島 沖縄 北海道 東北地方 関東地方 中部地方 近畿地方 "
    u"四国 九州 日本 中国 朝鮮半島 欧州 北米 南米 ロンドン パリ ベルリン"_s;

const QString Extensions =
    u".txt .doc .xls .ppt .pdf .jpg .gif .bmp .htm .csv .lzh .zip .wav .mid .dxf .TXT .DOC"_s;

const QString Sentences =
    u"%nは%aものである。\n%nと%nの関係を%vする。\n%nを%vするには%nが必要である。\n"
    u"%nでは%nが%vされる。\n%aこととして%nが挙げられる。\n%nの%vによって%nが%vした。\n"
    u"%yに%pで%nが%vされた。\n%nは%nの一種であり、%nとして%vされている。\n"
    u"%aことに、%nについては%d種類の%nが知られている。\n%nを%vする際には、%nに注意する。\n"
    u"%nの%nは%n、%n、%nの%dつに分けられる。\n%pの%nは%a%nで有名である。\n"
    u"%nが%vすると、%nも%vする。\n%n（%l）は%nの略称である。\n%lによる%nの%vが行われている。\n"
    u"%nを%nに%vし、%nとして%vした。\n%nについては%y以降の%nを参照のこと。\n"
    u"%a%nと%a%nとを比べると、%nの差が大きい。\n%nの値は%d.%dから%d%%の範囲にある。\n"
    u"%nとは何かを%vした結果、%nであることがわかった。\n%nが%nを%vするという説もある。\n"
    u"ここで%nを%nと置き換えて%vする。\n%nの%vは%dページの図に示す。\n"
    u"%nのない%nは%vできない。\n%pでは%nの%vが盛んである。\n%nは、%nから%nへと%vしてきた。\n"
    u"%nを知るための手がかりは%nにある。\n「%n」という語は%nから来ている。\n"
    u"%nと%nを%vしたところ、%nは%d倍になった。\n%nは%lと呼ばれることもある。\n"
    u"%aものほど%nを%vしやすい。\n%nによれば、%yの%nは%d件であった。\n"
    u"%nの%vについて、%nの立場から%vする。\n%nは%vしないほうがよい。\n"_s;

const QString Definitions =
    u"%nの一種。\n%nを%vするための%n。\n%nと%nを%vする%n。\n%a%nのこと。\n%nにおける%nの%v。\n"
    u"%nを%nに%vすること。また、その%n。\n%yに%pで%vされた%n。\n%nの単位。記号は%l。\n%nの略。\n"
    u"%nに含まれる%a%n。\n%pで行われる%a%n。\n%nで用いる%a%n。%lとも書く。\n%nの反対語。\n"
    u"%nを%vしたもの。%d種類ある。\n%nのうち、%nを%vするものをいう。\n"_s;

} // namespace

const Vocabulary& vocabulary()
{
    static const Vocabulary all{.kanji = words(Kanji),
                                .katakana = words(Katakana),
                                .hiragana = words(Hiragana),
                                .latin = words(Latin),
                                .suffixes = words(Suffixes),
                                .prefixes = words(Prefixes),
                                .adjectives = words(Adjectives),
                                .verbs = words(Verbs),
                                .connectors = words(Connectors),
                                .places = words(Places),
                                .extensions = words(Extensions),
                                .sentences = lines(Sentences),
                                .definitions = lines(Definitions)};
    return all;
}

QString halfWidthKatakana(const QString& text)
{
    static const QString Full =
        u"。「」、・ヲァィゥェォャュョッーアイウエオカキクケコサシスセソタチツテトナニヌネノ"
        u"ハヒフヘホマミムメモヤユヨラリルレロワン"_s;
    static const QString Voiced = u"ガギグゲゴザジズゼゾダヂヅデドバビブベボヴ"_s;
    static const QString Unvoiced = u"カキクケコサシスセソタチツテトハヒフヘホウ"_s;
    static const QString HalfVoiced = u"パピプペポ"_s;
    static const QString WithoutRing = u"ハヒフヘホ"_s;
    constexpr char16_t FirstHalf = 0xFF61;
    constexpr char16_t VoicedMark = 0xFF9E;
    constexpr char16_t RingMark = 0xFF9F;

    const auto half = [&](QChar full) {
        return QChar(static_cast<char16_t>(FirstHalf + Full.indexOf(full)));
    };
    QString result;
    for (const QChar character : text) {
        if (const qsizetype voiced = Voiced.indexOf(character); voiced >= 0) {
            result += half(Unvoiced[voiced]);
            result += QChar(VoicedMark);
        } else if (const qsizetype ringed = HalfVoiced.indexOf(character); ringed >= 0) {
            result += half(WithoutRing[ringed]);
            result += QChar(RingMark);
        } else {
            result += Full.contains(character) ? half(character) : character;
        }
    }
    return result;
}

QString fullWidthLatin(const QString& text)
{
    constexpr char16_t ToFullWidth = 0xFEE0;
    QString result = text;
    for (QChar& character : result) {
        if (character > u' ' && character < QChar(0x7F) && character.isLetterOrNumber())
            character = QChar(static_cast<char16_t>(character.unicode() + ToFullWidth));
    }
    return result;
}

} // namespace quillon::corpus
